// A scan listing: the report, against that of a plain reading. The first character of the input
// says whether reading the listing ends in an error, and whether a supplicant runs.

#include <algorithm>
#include <optional>
#include <vector>

#include "fuzz/target.h"
#include "lib/exit_status.h"
#include "wifi/cell.h"
#include "wifi/scan.h"

using namespace zelta;
using namespace zelta::fuzz;

namespace {

bool contains(std::string_view text, std::string_view part) { return text.find(part) != text.npos; }

std::string description(std::string_view element, bool encrypted) {
    if (contains(element, "Unknown") || contains(element, "unknown"))
        return "";
    std::string protocol = "UNKNOWN", cipher = "NONE";
    if (contains(element, "WPA "))
        protocol = "WPA", cipher = "TKIP";
    else if (contains(element, "WPA2"))
        protocol = "WPA2", cipher = "CCMP";
    const size_t suites = element.find("Authentication Suites");
    const bool enterprise = suites != element.npos && contains(element.substr(suites), "802.1");
    return "[" + protocol + (enterprise ? "-EAP-" : "-PSK-") + (encrypted ? cipher : "NONE") +
           (contains(element, "Preauthentication Supported") ? "-preauth]" : "]") + (encrypted ? "" : "[IBSS]");
}

std::string security(std::string_view cell) {
    // "Encryption key", one character, and three more of which two decide.
    const size_t key = cell.find("Encryption key");
    const bool encrypted = key != cell.npos && key + 18 <= cell.size() && cell.substr(key + 15, 2) == "on";
    size_t start = cell.find("IE:");
    if (start == cell.npos)
        return encrypted ? "[WEP]" : "[NONE]";
    std::string all;
    for (; start != cell.npos; start = cell.find("IE:", start + 1)) {
        const size_t line_end = cell.find('\n', start);
        const size_t end = line_end == cell.npos ? line_end : cell.find("IE:", line_end);
        const std::string one = description(cell.substr(start, std::min<size_t>(end - start, 300)), encrypted);
        if (all.size() + one.size() <= 127)
            all += one;
    }
    return all;
}

// What stands between two characters on the key's line, behind the key.
std::optional<std::string> field(std::string_view cell, std::string_view key, char opening, char closing) {
    const size_t at = cell.find(key);
    std::string_view line = cell.substr(at == cell.npos ? cell.size() : at + key.size());
    line = line.substr(0, line.find('\n'));
    const size_t first = line.find(opening), second = first == line.npos ? first : line.find(closing, first + 1);
    if (second == line.npos)
        return {};
    return std::string(line.substr(first + 1, second - first - 1));
}

std::string measurement(std::string_view cell, std::string_view key, size_t room) {
    const auto value = field(cell, key, '=', ' ');
    return value && value->size() <= room ? *value : "NA";
}

std::string report_line(std::string_view cell) {
    if (!contains(cell, "ESSID"))
        return "SSID not found.\n";
    const auto ssid = field(cell, "ESSID", '"', '"');
    if (!ssid)
        return "SSID format error.\n";
    if (ssid->size() > 35)
        return "";
    return measurement(cell, "Quality", 9) + "\t\t " + measurement(cell, "Signal level", 7) + "\t\t" +
           measurement(cell, "Noise level", 7) + "       " + security(cell) + "  " + *ssid + "\n";
}

// Lines, and pieces of 99 characters of longer ones; a NUL ends what is seen of them. An unfinished
// one at the end is lost to an error.
std::vector<std::string> pieces_of(std::string_view listing, bool fails, bool &unfinished) {
    std::vector<std::string> pieces;
    unfinished = false;
    while (!listing.empty() && !unfinished) {
        const std::string_view line = listing.substr(0, listing.find('\n') + 1); // 0: no line end
        const std::string_view piece = line.empty() ? listing.substr(0, 99) : line.substr(0, 99);
        unfinished = piece.size() < 99 && piece.back() != '\n';
        if (!unfinished || !fails)
            pieces.push_back(up_to_nul(piece));
        listing.remove_prefix(piece.size());
    }
    return pieces;
}

std::pair<int, std::string> plain_reading(std::string_view listing, bool fails) {
    bool unfinished;
    const std::vector<std::string> pieces = pieces_of(listing, fails, unfinished);
    auto opens_cell = [](const std::string &piece) { return contains(piece, "Cell"); };
    auto at = std::find_if(pieces.begin(), pieces.end(), opens_cell);
    if (at == pieces.end())
        return {fails ? exit_failed : exit_ok, fails ? "Failed to scan\n" : ""};
    std::string output = "Scan completed.\nLink Quality | Signal Level | Noise Level | Security type | SSID\n";
    while (at != pieces.end() && (fails || !unfinished || at + 1 != pieces.end())) {
        std::string cell = *at++;
        for (; at != pieces.end() && !opens_cell(*at); at++)
            if (cell.size() + at->size() <= 2048)
                cell += *at;
        if (at == pieces.end() && fails)
            return {exit_failed, output + "Failed to scan - 1\n"};
        output += report_line(cell);
    }
    return {exit_ok, output};
}

// The results of the parsers, which the report does not need, for the whole text as one.
void check_results(std::string text) {
    char room[8] = "";
    mstr description = mstr_array(room);
    const unsigned unknown = contains(text, "Unknown") || contains(text, "unknown") ? 1 : 0;
    require(parse_auth_block(1, text.c_str(), &description) == unknown, "an unknown element");
    require(parse_wifi_encryption(text.data(), &description) == 0, "a description always succeeds");
}

} // namespace

void zelta::fuzz::take(std::string_view input) {
    if (input.empty())
        return;
    around.listing = input.substr(1);
    around.reading_fails = (input[0] & 1) != 0;
    around.files_there = (input[0] & 2) != 0;
    const auto got = run([] { return wifi_scan(2, nullptr); });
    require(got == plain_reading(around.listing, around.reading_fails), got.second);
    check_results(up_to_nul(around.listing));
}

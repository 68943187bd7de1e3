// A scan listing: the report, against that of a plain reading. The first character of the input
// says whether reading the listing ends in an error, and whether a supplicant runs.

#include <algorithm>
#include <vector>

#include "app/exit_status.h"
#include "fuzz/surroundings.h"
#include "fuzz/target.h"
#include "process/runner.h"
#include "wifi/scan.h"

using namespace zelta;
using namespace zelta::fuzz;

namespace {

struct report {
    int result;
    std::string output;
};

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != text.npos;
}

std::string description(std::string_view element, bool encrypted) {
    if (contains(element, "Unknown") || contains(element, "unknown"))
        return "";
    const bool wpa = contains(element, "WPA "), wpa2 = !wpa && contains(element, "WPA2");
    const size_t suites = element.find("Authentication Suites");
    const bool enterprise = suites != element.npos && contains(element.substr(suites), "802.1");
    const char *protocol = wpa ? "WPA" : wpa2 ? "WPA2" : "UNKNOWN";
    const char *cipher = wpa ? "TKIP" : wpa2 ? "CCMP" : "NONE";
    return std::string("[") + protocol + (enterprise ? "-EAP-" : "-PSK-") +
           (encrypted ? cipher : "NONE") +
           (contains(element, "Preauthentication Supported") ? "-preauth]" : "]") +
           (encrypted ? "" : "[IBSS]");
}

std::string security(std::string_view cell) {
    // "Encryption key", one character, and three more of which two decide.
    const size_t key = cell.find("Encryption key");
    const bool encrypted =
        key != cell.npos && key + 18 <= cell.size() && cell.substr(key + 15, 2) == "on";
    size_t start = cell.find("IE:");
    if (start == cell.npos)
        return encrypted ? "[WEP]" : "[NONE]";
    std::string all;
    for (; start != cell.npos; start = cell.find("IE:", start + 1)) {
        const size_t line_end = cell.find('\n', start);
        const size_t end = line_end == cell.npos ? line_end : cell.find("IE:", line_end);
        const std::string one =
            description(cell.substr(start, std::min<size_t>(end - start, 300)), encrypted);
        if (all.size() + one.size() <= 127)
            all += one;
    }
    return all;
}

// The rest of the line behind the first key; nothing without a key.
bool line_behind(std::string_view cell, std::string_view key, std::string_view &line) {
    const size_t at = cell.find(key);
    if (at == cell.npos)
        return false;
    line = cell.substr(at + key.size());
    line = line.substr(0, line.find('\n'));
    return true;
}

std::string measurement(std::string_view cell, std::string_view key, size_t room) {
    std::string_view line;
    const size_t equals = line_behind(cell, key, line) ? line.find('=') : line.npos;
    const size_t blank = equals == line.npos ? equals : line.find(' ', equals);
    if (blank == line.npos || blank - equals - 1 > room)
        return "NA";
    return std::string(line.substr(equals + 1, blank - equals - 1));
}

std::string report_line(std::string_view cell) {
    std::string_view line;
    if (!line_behind(cell, "ESSID", line))
        return "SSID not found.\n";
    const size_t first = line.find('"');
    const size_t second = first == line.npos ? first : line.find('"', first + 1);
    if (second == line.npos)
        return "SSID format error.\n";
    const std::string ssid(line.substr(first + 1, second - first - 1));
    if (ssid.size() > 35)
        return "";
    return measurement(cell, "Quality", 9) + "\t\t " + measurement(cell, "Signal level", 7) +
           "\t\t" + measurement(cell, "Noise level", 7) + "       " + security(cell) + "  " + ssid +
           "\n";
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

report plain_reading(std::string_view listing, bool fails) {
    bool unfinished;
    const std::vector<std::string> pieces = pieces_of(listing, fails, unfinished);
    auto opens_cell = [](const std::string &piece) { return contains(piece, "Cell"); };
    auto at = std::find_if(pieces.begin(), pieces.end(), opens_cell);
    if (at == pieces.end())
        return fails ? report{exit_failed, "Failed to scan\n"} : report{exit_ok, ""};
    std::string output =
        "Scan completed.\nLink Quality | Signal Level | Noise Level | Security type | SSID\n";
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

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    around = {.listing = as_text(data + 1, size - 1),
              .reading_fails = (data[0] & 1) != 0,
              .files_there = (data[0] & 2) != 0};
    int result = exit_invalid;
    const std::string output = printed([&] { result = wifi_scan(2, nullptr); });
    const report expected = plain_reading(around.listing, around.reading_fails);
    require(result == expected.result, "the result");
    require(output == expected.output, output);
    require(mbuf_size(&child_info_mbuf) == 0, "a child is still registered");
    return 0;
}

// A settings file: reading it, and both validations, against a plain reading of the same bytes.

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <span>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/target.h"
#include "lib/exit_status.h"
#include "settings/ip_settings.h"

using namespace zelta;
using namespace zelta::fuzz;

namespace {

struct entry {
    std::string key, value;
};

// Every whole line is an entry; a NUL ends what is seen of it.
std::vector<entry> plain_reading(std::string_view text) {
    std::vector<entry> entries;
    for (size_t end; entries.size() < config_pairs && (end = text.find('\n')) != text.npos;
         text.remove_prefix(end + 1)) {
        const std::string line = up_to_nul(text.substr(0, end + 1));
        const size_t equals = line.find('=');
        if (equals == line.npos)
            entries.push_back({line, ""});
        else
            entries.push_back({line.substr(0, equals), line.substr(equals + 1, line.find('\n') - equals - 1)});
    }
    return entries;
}

using setting = std::optional<std::string>;

// The lookup in the plain reading.
setting value_of(const std::vector<entry> &entries, std::string_view key) {
    const auto at = std::find_if(entries.begin(), entries.end(), [&](const entry &each) { return each.key == key; });
    return at != entries.end() ? at->value : setting();
}

struct wanted_setting {
    const char *key;
    const char *ip_settings::*field;
    const char *complaint; // null for a key that may be missing
};

constexpr wanted_setting manual_settings[] = {
    {"address", &ip_settings::address, "No IP address specified\n"},
    {"netmask", &ip_settings::netmask, "No IP netmask specified\n"},
    {"gateway", &ip_settings::gateway, "No IP gateway specified\n"},
    {"dns", &ip_settings::dns, nullptr},
    {"routes", &ip_settings::routes, "No IP routes specified\n"},
};

constexpr wanted_setting modem_settings[] = {
    {"device", &ip_settings::device, "No serial device specified\n"},
    {"user", &ip_settings::user, nullptr},
    {"password", &ip_settings::password, nullptr},
};

constexpr wanted_setting script_settings[] = {
    {"connect", &ip_settings::connect, "No connect chat script specified\n"},
    {"disconnect", &ip_settings::disconnect, "No disconnect chat script specified\n"},
};

// The complaint about the first key that is missing; nothing when none is. All up to there is stored.
std::string complaint(const std::vector<entry> &entries, std::span<const wanted_setting> settings) {
    for (const auto &[key, field, text] : settings) {
        const setting value = value_of(entries, key);
        const char *stored = in_config.*field;
        require(value == (stored != nullptr ? setting(stored) : setting()), key);
        if (!value && text != nullptr)
            return text;
    }
    return "";
}

std::string ip_complaint(const std::vector<entry> &entries) {
    const std::string missing = complaint(entries, manual_settings);
    return missing.empty() && value_of(entries, "routes") != "default" ? "Default route not specified\n" : missing;
}

std::string gprs_complaint(const std::vector<entry> &entries) {
    const std::string missing = complaint(entries, modem_settings);
    const std::string type = value_of(entries, "secrets-file").value_or("(null)");
    constexpr std::string_view types[] = {"pap", "chap", "srp"};
    const auto kind = std::find(std::begin(types), std::end(types), type) - types;
    if (!missing.empty())
        return missing;
    if (kind == secrets_kinds)
        return "Unrecognised secrets file type (" + type + ")\n";
    require(in_config.secrets_type == kind, "the kind of secrets");
    return complaint(entries, script_settings);
}

void check(const config_table &table, const std::vector<entry> &entries) {
    for (size_t i = 0; i < entries.size(); i++)
        require(table[i].key == entries[i].key && table[i].value == entries[i].value, "an entry differs");
    require(entries.size() == config_pairs || table[entries.size()].key == nullptr, "the entries have no end");

    in_config = {};
    const auto ip = run([&] { return val_ip_config_file(table); });
    const setting mode = value_of(entries, "config");
    const std::string complained = mode == "manual" ? ip_complaint(entries) : "";
    const bool automatic = mode == "auto", valid = automatic || (mode == "manual" && complained.empty());
    require(ip == std::pair(valid ? exit_ok : exit_invalid, complained), ip.second);
    const int valid_mode = automatic ? ip_mode_auto : ip_mode_manual;
    require(in_config.ip_mode == (valid ? valid_mode : 0), "the mode");

    const auto gprs = run([&] { return val_gprs_config_file(table); });
    const std::string fault = gprs_complaint(entries);
    require(gprs == std::pair(fault.empty() ? exit_ok : exit_invalid, fault), gprs.second);
}

} // namespace

void zelta::fuzz::take(std::string_view input) {
    static const int file = memfd_create("settings", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    require(ftruncate(file, 0) == 0 &&
                pwrite(file, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()),
            "the file cannot be written");
    static char leftover[] = "leftover"; // what reading does not fill or end shows
    config_table table;
    std::fill(std::begin(table), std::end(table), config_pair{.key = leftover, .value = leftover});
    require(run([&] { return parse_config_file(path.c_str(), table); }).first == exit_ok, "the result of reading");
    const std::vector<entry> entries = plain_reading(input);
    check(table, entries);
    for (size_t i = 0; i < entries.size(); i++) {
        free(table[i].key);
        free(table[i].value);
    }
}

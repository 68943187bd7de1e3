// A settings file: reading it, and both validations, against a plain reading of the same bytes.

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "app/exit_status.h"
#include "fuzz/surroundings.h"
#include "fuzz/target.h"
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
            entries.push_back(
                {line.substr(0, equals), line.substr(equals + 1, line.find('\n') - equals - 1)});
    }
    return entries;
}

using setting = std::optional<std::string>;

// The lookup in the plain reading.
setting value_of(const std::vector<entry> &entries, std::string_view key) {
    for (const entry &each : entries)
        if (each.key == key)
            return each.value;
    return {};
}

setting stored(const char *value) {
    return value != nullptr ? setting(value) : setting();
}

void check_table(const config_table &table, const std::vector<entry> &entries) {
    for (size_t i = 0; i < entries.size(); i++)
        require(table[i].key == entries[i].key && table[i].value == entries[i].value,
                "an entry differs");
    require(entries.size() == config_pairs || table[entries.size()].key == nullptr,
            "the entries have no end");
}

void check_ip(const config_table &table, const std::vector<entry> &entries) {
    int result = exit_failed;
    const std::string output = printed([&] { result = val_ip_config_file(table); });
    const setting mode = value_of(entries, "config");
    const bool manual = mode == "manual";
    bool complete = value_of(entries, "routes") == "default";
    for (const char *key : {"address", "netmask", "gateway"})
        complete = complete && value_of(entries, key).has_value();
    require(result == (mode == "auto" || (manual && complete) ? exit_ok : exit_invalid),
            "the result for the IP settings");
    require(output.empty() == (!manual || complete), "a complaint about the IP settings");
    const int valid_mode = manual ? ip_mode_manual : ip_mode_auto;
    require(in_config.ip_mode == (result == exit_ok ? valid_mode : 0), "the mode");
    if (result == exit_ok && manual)
        require(value_of(entries, "address") == stored(in_config.address) &&
                    value_of(entries, "netmask") == stored(in_config.netmask) &&
                    value_of(entries, "gateway") == stored(in_config.gateway) &&
                    value_of(entries, "dns") == stored(in_config.dns),
                "an IP setting differs");
}

void check_gprs(const config_table &table, const std::vector<entry> &entries) {
    int result = exit_failed;
    const std::string output = printed([&] { result = val_gprs_config_file(table); });
    constexpr std::array<std::string_view, secrets_kinds> secrets_type_names = {"pap", "chap",
                                                                                "srp"};
    const setting type = value_of(entries, "secrets-file");
    bool complete = type == "pap" || type == "chap" || type == "srp";
    for (const char *key : {"device", "connect", "disconnect"})
        complete = complete && value_of(entries, key).has_value();
    require(result == (complete ? exit_ok : exit_invalid), "the result for the GPRS settings");
    require(output.empty() == complete, "a complaint about the GPRS settings");
    if (complete)
        require(value_of(entries, "device") == stored(in_config.device) &&
                    value_of(entries, "user") == stored(in_config.user) &&
                    value_of(entries, "password") == stored(in_config.password) &&
                    value_of(entries, "connect") == stored(in_config.connect) &&
                    value_of(entries, "disconnect") == stored(in_config.disconnect) &&
                    secrets_type_names.at(static_cast<size_t>(in_config.secrets_type)) == type,
                "a GPRS setting differs");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const int file = memfd_create("settings", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    require(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == static_cast<ssize_t>(size),
            "the file cannot be written");
    static char leftover[] = "leftover"; // what reading does not fill or end shows
    config_table table;
    std::fill(std::begin(table), std::end(table), config_pair{.key = leftover, .value = leftover});
    int result = exit_failed;
    printed([&] { result = parse_config_file(path.c_str(), table); });
    require(result == exit_ok, "the result of reading");

    const std::vector<entry> entries = plain_reading(as_text(data, size));
    check_table(table, entries);
    in_config = {};
    check_ip(table, entries);
    check_gprs(table, entries);
    for (size_t i = 0; i < entries.size(); i++) {
        free(table[i].key);
        free(table[i].value);
    }
    return 0;
}

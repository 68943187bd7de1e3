#include "wifi/scan.h"

#include <cstdio>
#include <cstring>

#include "app/exit_status.h"
#include "lib/mstr.h"
#include "netif/wpa_supplicant.h"
#include "process/privilege.h"
#include "process/runner.h"
#include "wifi/cell.h"

namespace zelta {

namespace {

constexpr uint32_t cell_room = 2048;

// A line of the listing, or a piece of one that is longer.
using line_buffer = char[100];

bool read_line(line_buffer &line, FILE *listing) {
    return fgets(line, sizeof line, listing) != nullptr;
}

bool opens_cell(const line_buffer &line) {
    return strstr(line, "Cell") != nullptr;
}

template <size_t Size>
mstr array_string(char (&array)[Size]) {
    return {
        .magic = MSTR_MAGIC_ARRAY, .capacity = Size - 1, .c_str = _mstr_init_buffer(array, Size)};
}

// Takes the text between the first two double quotes behind "ESSID" into ssid; line and rest are
// working strings, which the caller releases.
bool take_ssid(mstr *cell, mstr *ssid, mstr *rest, mstr *line) {
    if (mstr_assign(rest, cell) != 0 || mstr_partition_cstr(line, rest, "ESSID") != 1) {
        puts("SSID not found.");
        return false;
    }
    if (mstr_partition_cstr(line, rest, "\n") < 0 || mstr_partition_cstr(rest, line, "\"") != 1 ||
        mstr_partition_cstr(rest, line, "\"") != 1) {
        puts("SSID format error.");
        return false;
    }
    return mstr_assign(ssid, rest) == 0;
}

bool find_ssid(mstr *cell, mstr *ssid) {
    mstr rest = {.magic = MSTR_MAGIC_HEAP};
    mstr line = {.magic = MSTR_MAGIC_HEAP};
    bool found = take_ssid(cell, ssid, &rest, &line);
    mstr_destroy(&rest);
    mstr_destroy(&line);
    return found;
}

const char *measurement(mstr *cell, const char *key, mstr *field) {
    if (parse_key(mstr_get(cell), key, field) != 0)
        mstr_strcpy(field, "NA");
    return mstr_get(field);
}

// Prints the report line of a complete cell; nothing for one whose SSID cannot be shown.
void report_cell(mstr *cell) {
    char ssid_array[36] = {}, quality_array[10] = {}, signal_array[8] = {}, noise_array[8] = {};
    char security_array[128] = {};
    mstr ssid = array_string(ssid_array), quality = array_string(quality_array);
    mstr signal = array_string(signal_array), noise = array_string(noise_array);
    mstr security = array_string(security_array);
    if (!find_ssid(cell, &ssid))
        return;
    parse_wifi_encryption(mstr_get(cell), &security);
    printf("%s\t\t %s\t\t%s       %s  %s\n", measurement(cell, "Quality", &quality),
           measurement(cell, "Signal level", &signal), measurement(cell, "Noise level", &noise),
           mstr_get(&security), mstr_get(&ssid));
}

// Collects the cell that the line opens, up to the line that opens the next one, which is in line
// then, or to the end of the listing. False when reading fails.
bool collect_cell(FILE *listing, line_buffer &line, mstr *cell) {
    mstr_clear(cell);
    do {
        mstr_strcat(cell, line); // a line that does not fit is left out, later ones may fit again
        if (!read_line(line, listing))
            return ferror(listing) == 0;
    } while (!opens_cell(line));
    return true;
}

int report_networks(FILE *listing) {
    line_buffer line;
    do {
        if (!read_line(line, listing)) {
            if (feof(listing) != 0)
                return exit_ok;
            puts("Failed to scan");
            return exit_failed;
        }
    } while (!opens_cell(line));

    fputs("Scan completed.\nLink Quality | Signal Level | Noise Level | Security type | SSID\n",
          stdout);
    char cell_data[mstr_storage(cell_room)];
    mstr cell = {.magic = MSTR_MAGIC_GUARDED,
                 .capacity = cell_room,
                 .c_str = _mstr_init_data(cell_data, cell_room, MSTR_MAGIC_GUARDED)};
    // At the end of the stream nothing more follows; an opening line that ran into it is no cell.
    while (feof(listing) == 0) {
        if (!collect_cell(listing, line, &cell)) {
            printf("Failed to scan - %d\n", ferror(listing));
            return exit_failed;
        }
        report_cell(&cell);
    }
    return exit_ok;
}

int scan() {
    FILE *listing = zelta_popen("/usr/sbin/iwlist", "iwlist", "wlan0", "scan", nullptr);
    if (listing == nullptr) {
        puts("Failed to start the scan.");
        return exit_failed;
    }
    int result = report_networks(listing);
    zelta_pclose(listing);
    return result;
}

} // namespace

int wifi_scan(int, char *[]) {
    become_root();
    if (supplicant_runs())
        return scan();
    if (zelta_system("/usr/sbin/wpa_supplicant", "wpa_supplicant", "-iwlan0", "-C",
                     "/var/run/wpa_supplicant", "-B", nullptr) != 0) {
        puts("Failed to start WPA supplicant.");
        return exit_failed;
    }
    int result = scan();
    stop_wpa_supplicant();
    return result;
}

} // namespace zelta

#include "wifi/scan.h"

#include <cstdio>
#include <cstring>

#include "lib/exit_status.h"
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

// Puts the text between the first two double quotes that follow "ESSID" on its line into ssid. False
// when there is none to show, after a message unless it is too long.
bool find_ssid(mstr *cell, mstr *ssid) {
    const field_result result = cut_field(mstr_get(cell), "ESSID", "\"", "\"", ssid);
    if (result == field_without_key)
        puts("SSID not found.");
    else if (result == field_malformed)
        puts("SSID format error.");
    return result == field_cut;
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
    mstr ssid = mstr_array(ssid_array), quality = mstr_array(quality_array);
    mstr signal = mstr_array(signal_array), noise = mstr_array(noise_array);
    mstr security = mstr_array(security_array);
    if (!find_ssid(cell, &ssid))
        return;
    parse_wifi_encryption(mstr_get(cell), &security);
    printf("%s\t\t %s\t\t%s       %s  %s\n", measurement(cell, "Quality", &quality),
           measurement(cell, "Signal level", &signal), measurement(cell, "Noise level", &noise),
           mstr_get(&security), mstr_get(&ssid));
}

// Collects the cell that the line opens: up to the line that opens the next cell, which is left in
// line, or up to the end of the listing. False when reading fails.
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
    mstr cell = mstr_guarded(cell_data, cell_room);
    // The last cell was collected up to the end of the stream. A listing whose last line opens a
    // cell and lacks its line end has reached the end too: that cell is not reported.
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
    if (start_scan_supplicant() != 0) {
        puts("Failed to start WPA supplicant.");
        return exit_failed;
    }
    int result = scan();
    stop_wpa_supplicant();
    return result;
}

} // namespace zelta

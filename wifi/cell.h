// The fields of one network, taken from its cell in the listing of iwlist(8): the line that
// contains "Cell" and the lines after it up to the next such line.

#pragma once

#include "lib/mstr.h"

namespace zelta {

// How cutting a field out of a cell ends; only field_cut changes the string that receives it.
enum field_result { field_cut, field_without_key, field_malformed, field_too_long };

// Puts into field what stands between two separators on the key's line: the first opening one that
// follows the key there, and the first closing one after that.
field_result cut_field(const char *cell, const char *key, const char *opening, const char *closing,
                       mstr *field);

// Puts the value of a key=value measurement, which a blank ends, into value: 0; or 1, and value is
// unchanged, when it is not found or does not fit.
unsigned parse_key(const char *cell, const char *key, mstr *value);

// Appends the description of one information element, such as "[WPA2-PSK-CCMP]", or nothing when
// description cannot hold it whole: 0. An element that the listing calls unknown is passed over: 1.
// encrypted is the flag of the cell, 0 for off.
unsigned parse_auth_block(unsigned encrypted, const char *block, mstr *description);

// Appends the description of the cell's security: "[WEP]" or "[NONE]" for a cell without
// information elements, else that of each element. Always 0. The cell stays as it is: only its
// terminator is written, with the same value.
unsigned parse_wifi_encryption(char *cell, mstr *description);

} // namespace zelta

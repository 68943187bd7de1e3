// The fields of one network, taken from its cell in the listing of iwlist(8): the line that
// contains "Cell" and the lines after it up to the next such line.

#pragma once

#include "lib/mstr.h"

namespace zelta {

// Puts the value of a key=value measurement into value: what stands between the first "=" that
// follows the key on the key's line and the next blank there. 0; 1, and value is unchanged, when
// that is not found or does not fit.
unsigned parse_key(const char *cell, const char *key, mstr *value);

// Appends the description of one information element, such as "[WPA2-PSK-CCMP]", or nothing when
// description cannot hold it whole: 0. An element that the listing calls unknown is passed over: 1.
// encrypted is the flag of the cell, 0 for off.
unsigned parse_auth_block(unsigned encrypted, const char *block, mstr *description);

// Appends the description of the cell's security: "[WEP]" or "[NONE]" for a cell without
// information elements, else that of each element. Always 0. The cell is not changed, but its
// terminator is written again.
unsigned parse_wifi_encryption(char *cell, mstr *description);

} // namespace zelta

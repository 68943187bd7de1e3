#include "wifi/cell.h"

#include <cstring>

namespace zelta {

namespace {

constexpr uint32_t description_room = 64;
constexpr uint32_t block_room = 300;
constexpr char element_mark[] = "IE:";

// cut_field on two working strings, which the caller releases.
field_result cut(const char *cell, const char *key, const char *opening, const char *closing,
                 mstr *field, mstr *rest, mstr *line) {
    if (mstr_strcpy(rest, cell) != 0 || mstr_partition_cstr(line, rest, key) != 1)
        return field_without_key;
    // Now rest follows the key. Each cut puts what precedes the separator into its first string.
    if (mstr_partition_cstr(line, rest, "\n") < 0 ||
        mstr_partition_cstr(rest, line, opening) != 1 ||
        mstr_partition_cstr(rest, line, closing) != 1)
        return field_malformed;
    return mstr_assign(field, rest) == 0 ? field_cut : field_too_long;
}

// 1 when "Encryption key" is followed by "on" in the cell, else 0. The block is working storage.
unsigned encryption_flag(mstr *cell, mstr *block) {
    static constexpr char key_text[] = "Encryption key";
    mstr key = {.magic = MSTR_MAGIC_CONST, .capacity = 0, .c_str = const_cast<char *>(key_text)};
    int at = mstr_find(cell, 0, &key);
    if (at < 0)
        return 0;
    // The value stands behind one separator character.
    uint32_t start = static_cast<uint32_t>(at + mstr_length(&key)) + 1;
    if (mstr_slice(block, cell, start, start + 3) != 0)
        return 0;
    return strncmp(mstr_get(block), "on", 2) == 0 ? 1 : 0;
}

// Describes the information element that starts at this position of the cell. It ends where the
// next one starts on a later line, or with the cell; what does not fit the block is not examined.
void describe_element(mstr *cell, uint32_t start, unsigned encrypted, mstr *block,
                      mstr *description) {
    uint32_t end = static_cast<uint32_t>(mstr_length(cell));
    int line_end = mstr_find_cstr(cell, start, "\n");
    int next =
        line_end < 0 ? -1 : mstr_find_cstr(cell, static_cast<uint32_t>(line_end), element_mark);
    if (next >= 0)
        end = static_cast<uint32_t>(next);
    if (end - start > block_room)
        end = start + block_room;
    if (mstr_slice(block, cell, start, end) == 0)
        parse_auth_block(encrypted, mstr_get(block), description);
}

} // namespace

field_result cut_field(const char *cell, const char *key, const char *opening, const char *closing,
                       mstr *field) {
    mstr rest = {.magic = MSTR_MAGIC_HEAP};
    mstr line = {.magic = MSTR_MAGIC_HEAP};
    field_result result = cut(cell, key, opening, closing, field, &rest, &line);
    mstr_destroy(&rest);
    mstr_destroy(&line);
    return result;
}

unsigned parse_key(const char *cell, const char *key, mstr *value) {
    return cut_field(cell, key, "=", " ", value) == field_cut ? 0 : 1;
}

unsigned parse_auth_block(unsigned encrypted, const char *block, mstr *description) {
    if (strstr(block, "Unknown") != nullptr || strstr(block, "unknown") != nullptr)
        return 1;
    const char *protocol = "UNKNOWN", *cipher = "NONE";
    if (strstr(block, "WPA ") != nullptr) {
        protocol = "WPA";
        cipher = "TKIP";
    } else if (strstr(block, "WPA2") != nullptr) {
        protocol = "WPA2";
        cipher = "CCMP";
    }
    if (encrypted == 0)
        cipher = "NONE";
    const char *suites = strstr(block, "Authentication Suites");
    bool enterprise = suites != nullptr && strstr(suites, "802.1") != nullptr;

    char data[mstr_storage(description_room)];
    mstr element = mstr_guarded(data, description_room);
    mstr_sprintf(&element, "[%s-%s-%s", protocol, enterprise ? "EAP" : "PSK", cipher);
    if (strstr(block, "Preauthentication Supported") != nullptr)
        mstr_strcat(&element, "-preauth");
    mstr_strcat(&element, "]");
    if (encrypted == 0)
        mstr_strcat(&element, "[IBSS]");
    mstr_append(description, &element);
    return 0;
}

unsigned parse_wifi_encryption(char *cell, mstr *description) {
    const uint32_t length = static_cast<uint32_t>(strlen(cell));
    mstr text = {.magic = MSTR_MAGIC_CSTR,
                 .capacity = length,
                 .c_str = _mstr_init_buffer(cell, size_t{length} + 1)};
    char data[mstr_storage(block_room)];
    mstr block = mstr_guarded(data, block_room);
    const unsigned encrypted = encryption_flag(&text, &block);
    int at = mstr_find_cstr(&text, 0, element_mark);
    if (at < 0)
        mstr_strcat(description, encrypted != 0 ? "[WEP]" : "[NONE]");
    while (at >= 0) {
        uint32_t start = static_cast<uint32_t>(at);
        describe_element(&text, start, encrypted, &block, description);
        at = mstr_find_cstr(&text, start + 1, element_mark);
    }
    return 0;
}

} // namespace zelta

#include "wifi/cell.h"

#include <string>

#include <gtest/gtest.h>

using namespace zelta;

namespace {

// What the description holds afterwards, which has this much room and holds a text already.
std::string security(std::string cell, uint32_t room = 127, const char *before = "") {
    std::string buffer(room + 1, '#');
    mstr description = {MSTR_MAGIC_ARRAY, 0, room, _mstr_init_buffer(buffer.data(), room + 1)};
    mstr_strcpy(&description, before);
    EXPECT_EQ(parse_wifi_encryption(cell.data(), &description), 0U);
    return mstr_get(&description);
}

const std::string on = "Encryption key:on\n", off = "Cell\n  Encryption key:off\n";
const std::string wpa = "IE: WPA Version 1\n  Authentication Suites (1) : PSK\n";
const std::string wpa2 = "IE: IEEE 802.11i/WPA2 Version 1\n  Authentication Suites (1) : PSK\n";
const std::string eap = "IE: WPA2\n  Authentication Suites (1) : 802.1x\n   Preauthentication Supported\n";

} // namespace

TEST(Cell, KeyValue) {
    const char line[] = "Quality=70/70  Signal level=-36 dBm  \nQuality=1 ";
    const struct {
        const char *cell, *key, *value; // null: none, and the string stays as it was
    } rows[] = {
        {line, "Quality", "70/70"},
        {line, "Signal level", "-36"},
        {line, "Noise level", nullptr},
        {line, "", nullptr},
        {"Quality:60  Signal level=-50 dBm", "Quality", "-50"},
        {"Quality:60\nSignal level=-50 dBm", "Quality", nullptr},
        {"Quality=60\n Signal level=-50 dBm", "Quality", nullptr},
        {"Quality=1234567 ", "Quality", "1234567"},
        {"Quality=12345678 ", "Quality", nullptr},
    };
    for (const auto &[cell, key, expected] : rows) {
        SCOPED_TRACE(cell);
        char array[8] = "before";
        mstr value = {MSTR_MAGIC_ARRAY, 0, 7, array};
        EXPECT_EQ(parse_key(cell, key, &value), expected == nullptr ? 1U : 0U);
        EXPECT_STREQ(array, expected == nullptr ? "before" : expected);
    }
}

TEST(Cell, Security) {
    const std::string long_element = on + "IE:" + std::string(293, ' ');
    const struct {
        std::string cell, description;
    } rows[] = {
        {on, "[WEP]"},
        {off, "[NONE]"},
        {"Encryption key:on", "[NONE]"},
        {on + wpa + eap, "[WPA-PSK-TKIP][WPA2-EAP-CCMP-preauth]"},
        {off + wpa2 + wpa, "[WPA2-PSK-NONE][IBSS][WPA-PSK-NONE][IBSS]"},
        {on + "IE: Unknown: DD18\n" + wpa2, "[WPA2-PSK-CCMP]"},
        {on + wpa + "  unknown\n", ""},
        {on + "IE: WPA2\nWPA \n", "[WPA-PSK-TKIP]"},
        {"IE: other", "[UNKNOWN-PSK-NONE][IBSS]"},
        {on + "IE: a IE: WPA2\n" + wpa, "[WPA2-PSK-CCMP][WPA2-PSK-CCMP][WPA-PSK-TKIP]"},
        {long_element + "WPA2\n" + wpa, "[WPA2-PSK-CCMP][WPA-PSK-TKIP]"},
        {long_element + " WPA2", "[UNKNOWN-PSK-NONE]"},
    };
    for (const auto &[cell, description] : rows)
        EXPECT_EQ(security(cell), description) << cell;
}

TEST(Cell, DescriptionsThatDoNotFitAreLeftOut) {
    EXPECT_EQ(security(on + eap + wpa, 22, "8 before"), "8 before[WPA-PSK-TKIP]");
    EXPECT_EQ(security(on + eap + wpa, 21, "8 before"), "8 before");
}

TEST(Cell, AuthBlockTellsOfAnUnknownElement) {
    mstr description = {MSTR_MAGIC_HEAP, 0, 0, nullptr};
    EXPECT_EQ(parse_auth_block(1, "IE: unknown", &description), 1U);
    EXPECT_EQ(parse_auth_block(2, "WPA2", &description), 0U);
    EXPECT_STREQ(mstr_get(&description), "[WPA2-PSK-CCMP]");
    mstr_destroy(&description);
}

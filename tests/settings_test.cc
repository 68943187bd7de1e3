#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "settings/config_file.h"
#include "settings/ip_settings.h"

using namespace zelta;

namespace {

// A table that was read from a file of this text.
struct parsed {
    explicit parsed(const std::string &text) {
        const int file = memfd_create("settings", 0);
        EXPECT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        EXPECT_EQ(parse_config_file(("/proc/self/fd/" + std::to_string(file)).c_str(), table), 0);
        close(file);
    }
    ~parsed() {
        for (config_pair &pair : table)
            free(pair.key), free(pair.value);
    }
    config_table table = {};
};

} // namespace

TEST(Settings, LinesBecomeEntries) {
    const std::string most(19, '\n'), longest = "k=" + std::string((1 << 20) - 3, 'x');
    const struct {
        std::string text;
        const char *key, *value;
    } rows[] = {{"a=b\na=c\n", "a", "b"},      {"config = a=b\t\r\n", "config ", " a=b\t\r"},
                {"#a\n", "#a\n", ""},          {"=b\n", "", "b"},
                {"a=\n", "A", nullptr},        {"b=c\na=b", "a", nullptr},
                {most + "a=\n", "a", ""},      {most + "\na=\n", "a", nullptr},
                {longest + "\na=\n", "a", ""}, {longest + "x\na=\n", "a", nullptr}};
    for (const auto &[text, key, value] : rows)
        EXPECT_STREQ(config_lookup(parsed(text).table, key), value) << text.substr(0, 99);
}

TEST(Settings, MissingFile) {
    char untouched[] = "untouched";
    config_table table = {{untouched, untouched}};
    testing::internal::CaptureStderr();
    EXPECT_EQ(parse_config_file("/proc/self/fd/none", table), 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Open failed\n: No such file or directory\n");
    EXPECT_EQ(table[0].key, untouched);
}

// The complete settings, with one key missing or changed.
TEST(Settings, ValidationStoresUpToTheFirstFault) {
    const std::string complete = "\nconfig=manual\naddress=A\nnetmask=N\ngateway=G\nroutes=default\ndns=S\n"
                                 "device=D\nuser=U\npassword=P\nsecrets-file=pap\nconnect=C\ndisconnect=X\n";
    const struct {
        std::string change, prints;
        int ip_result, gprs_result, mode, secrets;
        std::string stored; // the first letters of what is there
    } rows[] = {
        {"dns", "", 0, 0, ip_mode_manual, secrets_pap, "ANGdDUPCX"},
        {"user", "", 0, 0, ip_mode_manual, secrets_pap, "ANGdSDPCX"},
        {"password", "", 0, 0, ip_mode_manual, secrets_pap, "ANGdSDUCX"},
        {"config", "", 1, 0, 0, secrets_pap, "DUPCX"},
        {"config=Auto", "", 1, 0, 0, secrets_pap, "DUPCX"},
        {"config=auto", "", 0, 0, ip_mode_auto, secrets_pap, "DUPCX"},
        {"address", "No IP address specified\n", 1, 0, 0, secrets_pap, "DUPCX"},
        {"netmask", "No IP netmask specified\n", 1, 0, 0, secrets_pap, "ADUPCX"},
        {"gateway", "No IP gateway specified\n", 1, 0, 0, secrets_pap, "ANDUPCX"},
        {"routes", "No IP routes specified\n", 1, 0, 0, secrets_pap, "ANGSDUPCX"},
        {"routes=R", "Default route not specified\n", 1, 0, 0, secrets_pap, "ANGRSDUPCX"},
        {"device", "No serial device specified\n", 0, 1, ip_mode_manual, secrets_pap, "ANGdS"},
        {"secrets-file", "Unrecognised secrets file type ((null))\n", 0, 1, ip_mode_manual, secrets_pap, "ANGdSDUP"},
        {"secrets-file=PAP", "Unrecognised secrets file type (PAP)\n", 0, 1, ip_mode_manual, secrets_pap, "ANGdSDUP"},
        {"secrets-file=chap", "", 0, 0, ip_mode_manual, secrets_chap, "ANGdSDUPCX"},
        {"secrets-file=srp", "", 0, 0, ip_mode_manual, secrets_srp, "ANGdSDUPCX"},
        {"connect", "No connect chat script specified\n", 0, 1, ip_mode_manual, secrets_pap, "ANGdSDUP"},
        {"disconnect", "No disconnect chat script specified\n", 0, 1, ip_mode_manual, secrets_pap, "ANGdSDUPC"},
    };
    for (const auto &[change, prints, ip_result, gprs_result, mode, secrets, stored] : rows) {
        SCOPED_TRACE(change);
        const std::string key = change.substr(0, change.find('='));
        std::string text = complete, found;
        const size_t at = text.find("\n" + key + "=") + 1;
        text.replace(at, text.find('\n', at) - at, key == change ? "" : change);
        parsed file(text);
        ip_settings &c = in_config = {};
        testing::internal::CaptureStdout();
        EXPECT_EQ(val_ip_config_file(file.table), ip_result);
        EXPECT_EQ(val_gprs_config_file(file.table), gprs_result);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), prints);
        EXPECT_EQ(c.ip_mode, mode);
        EXPECT_EQ(c.secrets_type, secrets);
        for (const char *value :
             {c.address, c.netmask, c.gateway, c.routes, c.dns, c.device, c.user, c.password, c.connect, c.disconnect})
            found += value != nullptr ? std::string(value, 1) : "";
        EXPECT_EQ(found, stored);
    }
}

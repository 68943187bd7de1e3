// The debug dumps: an address fills eight digits at least, and a size in bytes is not cut on machines
// of 32 bits.

#include "lib/mbuf.h"
#include "lib/mstr.h"

#include <cinttypes>
#include <string>

#include <gtest/gtest.h>

using namespace zelta;

namespace {

std::string hex(const void *address) {
    char digits[32];
    snprintf(digits, sizeof digits, "0x%08" PRIXPTR, reinterpret_cast<uintptr_t>(address));
    return digits;
}

template <typename T>
void expect_dump(int (*show)(const T *), const T *header, std::string text) {
    testing::internal::CaptureStdout();
    const int last_printed = show(header);
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), text);
    EXPECT_EQ(text.rfind('\n', text.size() - 2) + 1 + static_cast<size_t>(last_printed), text.size());
}

} // namespace

TEST(Dump, Headers) {
    const mbuf array = {0xAB, 0x10000, 0x10000, 0x20000, reinterpret_cast<void *>(0xCD)};
    expect_dump(_mbuf_debug_show, &array,
                "mbuf: " + hex(&array) +
                    "\n  magic: 0x000000AB\n  unitsize: 65536\n  used: 65536 (4294967296)\n"
                    "  capacity: 131072 (8589934592)\n  bufptr: 0x000000CD\n");
    char text[] = "abc";
    const mstr string = {0xAB, 2, UINT32_MAX, text};
    expect_dump(_mstr_debug_show, &string,
                "mstr: " + hex(&string) + "\n  magic: 0x000000AB\n  lastlen: 2\n  capacity: 4294967295\n  c_str: " +
                    hex(text) + " \"abc\"\n");
}

// What the models do not say of strings and unit arrays: limits, headers that were wrong from the
// start, read errors, wiping, alignment, the order of comparisons, dumps. And memory references.

#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "lib/mbuf.h"
#include "lib/mstr.h"

using namespace zelta;

// The linker sends every call of free here: storage that is given back is wiped.
static bool secret_freed;
extern "C" void __real_free(void *block);
extern "C" void __wrap_free(void *block);
void __wrap_free(void *block) {
    if (block != nullptr && memmem(block, malloc_usable_size(block), "secret", 6) != nullptr)
        secret_freed = true;
    __real_free(block);
}

namespace {

constexpr uint32_t limit = MSTR_MAX_CAPACITY;
const std::string endless(limit, 'x');

// How far storage grows, and that all of it is zeros when there was none before.
template <typename Header>
void check_growth(const Header &empty, uint32_t most, auto expand, auto reserve, auto destroy, auto data) {
    const uint32_t half = most / 2 + 1, last = most - 1;
    const uint32_t sizes[][3] = {{0, 1, 1},       {3, 4, 6},    {3, 7, 7},
                                 {0, last, last}, {0, most, 0}, {half, half + 1, half}};
    for (const auto &[capacity, need, grown] : sizes) {
        Header growing = empty;
        growing.capacity = capacity;
        EXPECT_EQ(reserve(&growing, need), grown >= need ? 0 : -1) << need;
        EXPECT_EQ(growing.capacity, grown);
        EXPECT_EQ(destroy(&growing), 0);
    }
    Header unmade = empty;
    unmade.capacity = 40;
    expand(&unmade, 50);
    EXPECT_EQ(std::string(static_cast<char *>(data(unmade)), 80), std::string(80, '\0'));
    EXPECT_EQ(destroy(&unmade), 0);
}

} // namespace

TEST(Mstr, Limits) {
    check_growth(mstr{MSTR_MAGIC_HEAP}, limit, _mstr_expand, mstr_reserve, mstr_destroy,
                 [](mstr s) { return s.c_str; });
    char *one_too_many = const_cast<char *>(endless.c_str());
    mstr longest = {MSTR_MAGIC_CONST, 0, 0, one_too_many + 1}, s = {MSTR_MAGIC_HEAP};
    EXPECT_EQ(mstr_capacity(&longest), limit - 1);
    EXPECT_EQ(mstr_strcpy(&s, one_too_many), -1);
    EXPECT_EQ(mstr_extend(&s, UINT32_MAX), -1);
    EXPECT_EQ(mstr_destroy(&s), 0);
}

TEST(Mstr, InvalidHeaders) {
    char text[] = "abc", full[] = {'f', 'u', 'l', 'l'};
    mstr headers[] = {{MSTR_MAGIC_HEAP - 1, 0, 3, text},
                      {MSTR_MAGIC_CONST + 1, 0, 3, text},
                      {MSTR_MAGIC_ARRAY, 4, 3, text},
                      {MSTR_MAGIC_ARRAY, 0, 3, full},
                      {MSTR_MAGIC_ARRAY, 0, 3, nullptr},
                      {MSTR_MAGIC_HEAP, 0, limit, nullptr},
                      {MSTR_MAGIC_CONST, 0, 0, const_cast<char *>(endless.c_str())}};
    for (mstr &header : headers)
        EXPECT_EQ(mstr_valid(&header), -1) << "row " << &header - headers;
    EXPECT_EQ(headers[3].lastlen, 0U) << "measured";
    EXPECT_EQ(mstr_create(nullptr, 1), -1);
    EXPECT_EQ(mstr_guarded(nullptr, 3).c_str, nullptr);
}

TEST(Mstr, ReadErrorKeepsWhatWasRead) {
    int silent[2];
    ASSERT_EQ(pipe2(silent, O_NONBLOCK), 0);
    for (FILE *stream : {fopen("/", "r"), fdopen(silent[0], "r")}) {
        mstr to = {MSTR_MAGIC_HEAP};
        ungetc('x', stream);
        EXPECT_EQ(mstr_getline(&to, stream), -1);
        EXPECT_STREQ(mstr_get(&to), "x");
        EXPECT_EQ(to.lastlen, 1U);
        mstr_destroy(&to);
        fclose(stream);
    }
    close(silent[1]);
}

TEST(Mstr, FreedStorageIsWiped) {
    secret_freed = false;
    mstr s = {MSTR_MAGIC_HEAP};
    EXPECT_EQ(mstr_strcpy(&s, "secret") | mstr_reserve(&s, 7) | mstr_destroy(&s), 0);
    EXPECT_FALSE(secret_freed);
    char *volatile copy = strdup("secret");
    free(copy);
    EXPECT_TRUE(secret_freed) << "what is freed is not looked at";
}

TEST(Mbuf, Limits) {
    check_growth(mbuf{MBUF_MAGIC_HEAP, 2}, MBUF_MAX_CAPACITY, _mbuf_expand, mbuf_reserve, mbuf_destroy,
                 [](mbuf b) { return b.bufptr; });
}

TEST(Mbuf, InvalidHeaders) {
    char text[] = "abc";
    mbuf headers[] = {{MBUF_MAGIC_HEAP - 1, 1, 0, 3, text},
                      {MBUF_MAGIC_EXTERN_LOCKED + 1, 1, 0, 3, text},
                      {MBUF_MAGIC_EXTERN, 1, 4, 3, text},
                      {MBUF_MAGIC_EXTERN, 1, 0, 3, nullptr},
                      {MBUF_MAGIC_HEAP, 1, 0, MBUF_MAX_CAPACITY, nullptr}};
    for (mbuf &header : headers)
        EXPECT_EQ(mbuf_valid(&header), -1) << "row " << &header - headers;
    EXPECT_EQ(mbuf_create(nullptr, 1, 1), -1);
    mbuf beyond_32_bits = {MBUF_MAGIC_EXTERN, 0x10000, 0, 0x10000, text};
    EXPECT_EQ(mbuf_valid(&beyond_32_bits), sizeof(size_t) > 4 ? 0 : -1);
}

TEST(Mbuf, SortComparesHeadsOfRunsInOrder) {
    static std::string compared;
    char units[] = "c0a0b0a1A0";
    mbuf array = {MBUF_MAGIC_EXTERN, 2, 5, 5, units};
    mbuf_sort(&array, [](const void *a, const void *b) {
        const char left = *static_cast<const char *>(a), right = *static_cast<const char *>(b);
        compared += {left, right, ' '};
        return left - right;
    });
    EXPECT_EQ(compared, "ca ba aa ca cb aA ");
}

TEST(Mbuf, UnitsAreAligned) {
    using record = max_align_t;
    alignas(record) char block[guard_lead<record> + sizeof(record) + guards_size];
    void *units = _mbuf_init_buffer(block + guard_lead<record>, sizeof(record), MBUF_MAGIC_GUARDED);
    mbuf made = {MBUF_MAGIC_HEAP, sizeof(record), 0, 1, nullptr};
    for (void *first : {units, mbuf_begin(&made)})
        EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % alignof(record), 0U);
    mbuf_destroy(&made);
}

TEST(Mref, TwoMemoriesOfOneLength) {
    char a[] = "abcd", b[] = "abce";
    const mref refused[][2] = {{{a, 3}, {b, 4}}, {{a, 4}, {a, 4}}, {{a, 0}, {b, 0}}, {{nullptr, 4}, {b, 4}}};
    for (const auto &[to, from] : refused)
        EXPECT_EQ(mref_memcpy(to, from) & mref_memcmp(to, from), -1);
    EXPECT_EQ(mref_memset({nullptr, 4}, 'x'), -1);
    EXPECT_EQ(mref_memcmp({a, 3}, {b, 3}), 0);
    EXPECT_GT(mref_memcmp({b, 4}, {a, 4}), 0);
    EXPECT_EQ(mref_memcpy({a + 1, 3}, {a, 3}) | mref_memset({a, 1}, 0x100 + 'x'), 0);
    EXPECT_STREQ(a, "xabc");
    EXPECT_EQ(mref_isnull(mref_null) + 2 * mref_isnull({a, 0}) + 4 * mref_isnull({nullptr, 4}), 1);
}

// An address fills eight digits at least, and a size in bytes is not cut on machines of 32 bits.
TEST(Dump, Headers) {
    char text[] = "abc", expected[999];
    const mbuf array = {0xAB, 0x10000, 0x10000, 0x20000, reinterpret_cast<void *>(0xCD)};
    const mstr string = {0xAB, 2, UINT32_MAX, text};
    snprintf(expected, sizeof expected,
             "mbuf: NULL pointer!\nmstr: NULL pointer!\n"
             "mbuf: 0x%08" PRIXPTR "\n  magic: 0x000000AB\n  unitsize: 65536\n  used: 65536 (4294967296)\n"
             "  capacity: 131072 (8589934592)\n  bufptr: 0x000000CD\n"
             "mstr: 0x%08" PRIXPTR "\n  magic: 0x000000AB\n  lastlen: 2\n  capacity: 4294967295\n"
             "  c_str: 0x%08" PRIXPTR " \"abc\"\n",
             reinterpret_cast<uintptr_t>(&array), reinterpret_cast<uintptr_t>(&string),
             reinterpret_cast<uintptr_t>(text));
    testing::internal::CaptureStdout();
    EXPECT_GE(_mbuf_debug_show(nullptr) | _mstr_debug_show(nullptr), 0);
    const int last_printed = _mbuf_debug_show(&array);
    EXPECT_EQ(_mstr_debug_show(&string), static_cast<int>(strlen(strstr(expected, "  c_str"))));
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    EXPECT_EQ(last_printed, 21);
}

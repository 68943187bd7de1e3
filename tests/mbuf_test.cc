#include "lib/mbuf.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "lib/mstr.h"
#include "tests/operations.h"

using namespace zelta;

namespace {

constexpr uint32_t heap = MBUF_MAGIC_HEAP, external = MBUF_MAGIC_EXTERN;

struct sample {
    static constexpr uint32_t first = heap, last = MBUF_MAGIC_EXTERN_LOCKED, constant = 0, unit = 2,
                              guarded = MBUF_MAGIC_GUARDED, terminator = 0;
    static constexpr auto destroy = mbuf_destroy;
    static constexpr auto reserve = mbuf_reserve, extend = mbuf_extend;

    sample(uint32_t kind, const std::string &units, uint32_t room, uint32_t unitsize = unit)
        : data(std::max<size_t>(1, unitsize * room + (kind == guarded ? guards_size : 0))), header{kind, unitsize, 0,
                                                                                                   room, nullptr} {
        if (kind == guarded)
            header.bufptr = _mbuf_init_buffer(data.data(), unitsize * room, kind);
        else if (kind >= external)
            header.bufptr = data.data();
        EXPECT_EQ(mbuf_valid(&header), 0);
        memcpy(header.bufptr, units.data(), units.size());
        header.used = static_cast<uint32_t>(units.size()) / unitsize;
    }
    ~sample() {
        mbuf_destroy(&header);
    }
    char *start() {
        return static_cast<char *>(header.bufptr);
    }
    std::string content() {
        return std::string(start(), header.unitsize * header.used);
    }
    std::vector<char> data;
    mbuf header;
};

// As much of the array's memory, in what the operation counts in: bytes or units.
mref ref(uint32_t count, mbuf *b) {
    return mk_mref(b->bufptr, count);
}

std::string compared; // the first bytes of the pairs, in the order of the calls

int by_first_byte(const void *a, const void *b) {
    const char left = *static_cast<const char *>(a), right = *static_cast<const char *>(b);
    compared += {left, right, ' '};
    return left - right;
}

const operation<mbuf> operations[] = {
    {.was = "a1b2", .from = "c3d4e5", .now = "c3d4e5", PAIR(mbuf_assign(to, from))},
    {.was = "a1b2", .from = "c3", .now = "a1b2c3", PAIR(mbuf_append(to, from))},
    {.was = "a1d4", .from = "b2c3", .now = "a1b2c3d4", PAIR(mbuf_insert(to, 1, from))},
    {.was = "a1", .from = "b2", .now = "a1b2", PAIR(mbuf_insert(to, 1, from))},
    {.was = "a1b2c3d4", .from = "x0y0", .now = "a1x0y0d4", PAIR(mbuf_write(to, 1, from))},
    {.was = "a1", .from = "x0", .now = "a1x0", PAIR(mbuf_write(to, 1, from))},
    {.was = "a1", .from = "x0", REFUSES(mbuf_insert(to, 2, from) & mbuf_write(to, 2, from))},
    {.was = "z0", .from = "a1b2c3d4", .now = "b2c3d4", PAIR(mbuf_slice(to, from, 1, 4))},
    {.was = "z0", .from = "a1", .now = "", PAIR(mbuf_slice(to, from, 1, 1))},
    {.was = "z0", .from = "a1", REFUSES(mbuf_slice(to, from, 1, 0) & mbuf_slice(to, from, 0, 2))},
    {.was = "a1b2c3", .now = "a1a1b2c3", CALLS(mbuf_memcpy(to, 1, ref(3, to)))},
    {.was = "a1b2", .now = "a1b2a1b2", CALLS(mbuf_concat(to, ref(2, to)))},
    {.was = "a1b2", .now = "a1b2a1", CALLS(mbuf_push_back(to, ref(0, to)))},
    {.was = "a1", REFUSES(mbuf_memcpy(to, 2, ref(1, to)) & mbuf_concat(to, ref(UINT32_MAX, to)))},
    {.was = "a1", REFUSES(mbuf_concat(to, {nullptr, 1}) & mbuf_push_back(to, {nullptr, 1}))},
    {.was = "a1b2c3d4", .now = "a1", CALLS(mbuf_erase(to, 1, 3) | mbuf_erase(to, 1, 2))},
    {.was = "a1b2", REFUSES(mbuf_erase(to, 2, 1) & mbuf_erase(to, 0, 3))},
    {.was = "b2a1", .now = "a1b2", CALLS(mbuf_sort(to, by_first_byte))},
    {.was = "b2a1", .now = "a1b2", CALLS(mbuf_reverse(to))},
    {.was = "b2a1", REFUSES(mbuf_sort(to, nullptr) & mbuf_extend(to, UINT32_MAX))},
    {.was = "a1", .now = "", CALLS(mbuf_clear(to) == 0 ? *static_cast<char *>(to->bufptr) : -1)},
    {.was = "b2", .from = "a1b2", .gives = 1, .fails = -2, PAIR(mbuf_compare(to, from))},
    {.was = "a1", .from = "a1b2", .gives = -1, .fails = -2, PAIR(mbuf_compare(to, from))},
    {.was = "a1", .from = "a1", .gives = 0, .fails = -2, PAIR(mbuf_compare(to, from))},
    {.was = "a1b2b3", .from = "b3", .gives = 2, CALLS(mbuf_find(to, 0, ref(2, from), nullptr))},
    {.was = "b1b2", .from = "b0", .gives = 1, CALLS(mbuf_find(to, 1, ref(1, from), by_first_byte))},
    {.was = "b1", .from = "b0", REFUSES(mbuf_find(to, 0, ref(2, from), 0) & mbuf_find(to, 0, {nullptr, 2}, 0))},
    {.was = "b1b1", .from = "b1b1", REFUSES(mbuf_find(to, 0, ref(1, from), 0) & mbuf_find(to, 0, ref(4, from), 0))},
    {.was = "a1", .gives = 1, CALLS(mbuf_index(to, mbuf_end(to)))},
    {.was = "a1b2", .from = "x0y0", .left = "b2y0", CALLS(mbuf_get(to, 1, ref(4, from)))},
    {.was = "a1", REFUSES(mbuf_get(to, 1, ref(2, from)) & mbuf_get(to, 0, ref(1, from)))},
    {.was = "a1b2", .from = "x0", .now = "a1x0", CALLS(mbuf_set(to, 1, ref(2, from)))},
    {.was = "a1b2",
     REFUSES(mbuf_set(to, 2, ref(2, from)) & mbuf_set(to, 0, ref(1, from)) & mbuf_set(to, 0, ref(4, from)))},
    {.was = "b2", .from = "x0", .now = "", .left = "b2", CALLS(mbuf_pop_back(to, ref(2, from)))},
    {.from = "x0", REFUSES(mbuf_pop_back(to, ref(2, from)))},
};

} // namespace

TEST(Mbuf, Operations) {
    check_operations<sample>(operations);
}

TEST(Mbuf, Storage) {
    check_storage<sample>(MBUF_MAX_CAPACITY);
    mbuf *b = mbuf_new(1, MBUF_MAX_CAPACITY - 1);
    EXPECT_EQ(mbuf_capacity(b), MBUF_MAX_CAPACITY - 1);
    EXPECT_EQ(mbuf_delete(&b), 0);
    EXPECT_EQ(mbuf_delete(&b), -1);
    EXPECT_EQ(mbuf_new(1, MBUF_MAX_CAPACITY), nullptr);
}

TEST(Mbuf, InvalidHeaders) {
    char text[] = "abc";
    mbuf headers[] = {{heap - 1, 1, 0, 3, text},
                      {sample::last + 1, 1, 0, 3, text},
                      {external, 1, 4, 3, text},
                      {external, 0, 0, 3, text},
                      {external, 1, 0, 3, nullptr}};
    for (mbuf &header : headers) {
        EXPECT_EQ(mbuf_valid(&header), -1) << "row " << &header - headers;
        EXPECT_EQ(mbuf_size(&header), UINT32_MAX);
    }
    EXPECT_EQ(mbuf_access(headers, 0), nullptr);
    mbuf beyond_32_bits = {external, 0x10000, 0, 0x10000, text};
    EXPECT_EQ(mbuf_valid(&beyond_32_bits), sizeof(size_t) > 4 ? 0 : -1);
}

TEST(Mbuf, SortComparesHeadsOfRunsInOrder) {
    sample array(heap, "c0a0b0a1A0", 5);
    compared = "";
    mbuf_sort(&array.header, by_first_byte);
    EXPECT_EQ(compared, "ca ba aa ca cb aA ");
}

TEST(Mbuf, UnitsAreAligned) {
    using record = max_align_t;
    alignas(record) char block[guard_lead<record> + sizeof(record) + guards_size];
    void *units = _mbuf_init_buffer(block + guard_lead<record>, sizeof(record), sample::guarded);
    sample made(heap, "", 1, sizeof(record));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(units) % alignof(record), 0U);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(made.start()) % alignof(record), 0U);
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
             "mbuf: 0x%08" PRIXPTR "\n  magic: 0x000000AB\n  unitsize: 65536\n  used: 65536 (4294967296)\n"
             "  capacity: 131072 (8589934592)\n  bufptr: 0x000000CD\n"
             "mstr: 0x%08" PRIXPTR "\n  magic: 0x000000AB\n  lastlen: 2\n  capacity: 4294967295\n"
             "  c_str: 0x%08" PRIXPTR " \"abc\"\n",
             reinterpret_cast<uintptr_t>(&array), reinterpret_cast<uintptr_t>(&string),
             reinterpret_cast<uintptr_t>(text));
    testing::internal::CaptureStdout();
    const int last_printed = _mbuf_debug_show(&array);
    EXPECT_EQ(_mstr_debug_show(&string), static_cast<int>(strlen(strstr(expected, "  c_str"))));
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    EXPECT_EQ(last_printed, 21);
}

#include "lib/mbuf.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/operations.h"

using namespace zelta;
using namespace std::literals;

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
    {.was = "b1", .from = "c1", REFUSES(mbuf_find(to, 0, ref(2, from), nullptr))},
    {.was = "b1", .from = "b1", REFUSES(mbuf_find(to, 0, ref(1, from), nullptr))},
    {.was = "b1", .from = "b1", REFUSES(mbuf_find(to, 0, ref(3, from), nullptr))},
    {.was = "a1", .gives = 1, CALLS(mbuf_index(to, mbuf_end(to)))},
    {.was = "a1b2", .from = "x0y0", .left = "b2y0", CALLS(mbuf_get(to, 1, ref(4, from)))},
    {.was = "a1", REFUSES(mbuf_get(to, 1, ref(2, from)) & mbuf_get(to, 0, ref(1, from)))},
    {.was = "a1b2", .from = "x0", .now = "a1x0", CALLS(mbuf_set(to, 1, ref(2, from)))},
    {.was = "a1", REFUSES(mbuf_set(to, 1, ref(2, from)) & mbuf_set(to, 0, ref(1, from)))},
    {.was = "a1", REFUSES(mbuf_set(to, 0, ref(3, from)))},
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
    for (mbuf &header : headers)
        EXPECT_EQ(mbuf_size(&header), UINT32_MAX) << "row " << &header - headers;
    EXPECT_EQ(mbuf_access(headers, 0), nullptr);
    mbuf beyond_32_bits = {external, 0x10000, 0, 0x10000, text};
    EXPECT_EQ(mbuf_valid(&beyond_32_bits), sizeof(size_t) > 4 ? 0 : -1);
}

TEST(Mbuf, ArraysOfOneStorageOrTwoUnitSizes) {
    for (const operation<mbuf> &row : operations) {
        sample to(heap, row.was, 9), wider(heap, "", 9, 2 * sample::unit);
        mbuf alias = to.header;
        EXPECT_TRUE(!row.pair || row.call(&to.header, &alias) == row.fails) << row.name;
        EXPECT_TRUE(!row.pair || row.call(&to.header, &wider.header) == row.fails) << row.name;
    }
}

TEST(Mbuf, UpdatesizeOfTwoKindsAlone) {
    for (uint32_t kind = sample::first; kind <= sample::last; kind++) {
        const bool allowed = kind == external || kind == MBUF_MAGIC_EXTERN_DATA;
        sample array(kind, "a1", 3);
        EXPECT_EQ(mbuf_updatesize(&array.header, 4), -1);
        EXPECT_EQ(mbuf_updatesize(&array.header, 3), allowed ? 0 : -1);
        EXPECT_EQ(mbuf_size(&array.header), allowed ? 3U : 1U);
    }
}

TEST(Mbuf, Iteration) {
    sample array(heap, "a1b2c3", 9);
    char *begin = static_cast<char *>(mbuf_begin(&array.header));
    for (uint32_t i = 0; i <= 3; i++) {
        char *at = begin + 2 * i;
        EXPECT_EQ(mbuf_index(&array.header, at), static_cast<int>(i));
        EXPECT_EQ(mbuf_next(&array.header, at), at + 2);
        EXPECT_EQ(mbuf_access(&array.header, i), i < 3 ? at : nullptr);
    }
    EXPECT_EQ(mbuf_end(&array.header), begin + 6);
    for (char *stray : {begin - 2, begin + 1, begin + 8})
        EXPECT_EQ(mbuf_next(&array.header, stray), nullptr);
}

TEST(Mbuf, SortsAndReversesUnitsOfEverySize) {
    for (uint32_t size : {2U, 4U, 8U, 16U, 64U, 600U})
        for (uint32_t count : {0U, 1U, 2U, 5U, 17U}) {
            SCOPED_TRACE(std::to_string(count) + " units of " + std::to_string(size));
            sample b(heap, "", 0, size);
            std::vector<std::string> units;
            for (uint32_t i = 0; i < count; i++) {
                units.push_back(std::string(size, static_cast<char>('A' + i)));
                units[i][0] = "bdacbadcabdbcadcb"[i];
                mbuf_push_back(&b.header, mk_mref(units[i].data(), size));
            }
            EXPECT_EQ(mbuf_sort(&b.header, by_first_byte), 0);
            std::stable_sort(units.begin(), units.end(), [](const auto &x, const auto &y) { return x[0] < y[0]; });
            EXPECT_EQ(b.content(), std::accumulate(units.begin(), units.end(), ""s));
            EXPECT_EQ(mbuf_reverse(&b.header), 0);
            std::reverse(units.begin(), units.end());
            EXPECT_EQ(b.content(), std::accumulate(units.begin(), units.end(), ""s));
        }
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
    EXPECT_EQ(mref_memcpy({a + 1, 3}, {a, 3}), 0);
    EXPECT_STREQ(a, "aabc");
    EXPECT_EQ(mref_memset({a, 2}, 0x100 + 'x'), 0);
    EXPECT_STREQ(a, "xxbc");
    EXPECT_EQ(mref_isnull(mref_null) + 2 * mref_isnull({a, 0}) + 4 * mref_isnull({nullptr, 4}), 1);
}

#include "lib/mbuf.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace zelta;
using namespace std::literals;

namespace {

constexpr uint32_t heap = MBUF_MAGIC_HEAP, guarded = MBUF_MAGIC_GUARDED,
                   external = MBUF_MAGIC_EXTERN, locked = MBUF_MAGIC_EXTERN_LOCKED;

// An array of one kind, its units two bytes each, laid out by the test.
struct sample {
    sample(uint32_t kind, const std::string &units, uint32_t room) : b{kind, 2, 0, room, nullptr} {
        data.reset(new char[2 * room + (kind == guarded ? guards_size : 0)]);
        if (kind >= guarded)
            b.bufptr = kind != guarded ? data.get() : _mbuf_init_buffer(data.get(), 2 * room, kind);
        EXPECT_EQ(mbuf_valid(&b), 0);
        memcpy(b.bufptr, units.data(), units.size());
        b.used = static_cast<uint32_t>(units.size() / 2);
    }
    ~sample() {
        mbuf_destroy(&b);
    }
    std::unique_ptr<char[]> data;
    mbuf b;
};

std::string bytes(const mbuf &b) {
    return std::string(static_cast<const char *>(b.bufptr), size_t{b.unitsize} * b.used);
}

struct operation {
    std::string was = "";  // units of the array operated on
    std::string from = ""; // those of the second one, or of the memory referred to
    std::string now = was; // after success; for want of room, they stay as they were
    std::string left = from;
    int gives = 0;
    int fails = -1;
    bool pair = false; // takes the second array itself
    const char *name;
    int (*call)(mbuf *b, mbuf *from);
};

// What a row does, which is its name as well; PAIR for an operation on two arrays.
#define CALLS(does)                                                                                \
    .name = #does,                                                                                 \
    .call = []([[maybe_unused]] mbuf *b, [[maybe_unused]] mbuf *from) -> int { return does; }
#define PAIR(does) .pair = true, CALLS(does)

// As much of the array's memory, in the unit that the operation counts in.
mref first(uint32_t count, mbuf *b) {
    return mk_mref(b->bufptr, count);
}

std::string compared; // the first bytes of the pairs, in the order of the calls

int by_first_byte(const void *a, const void *b) {
    const char left = *static_cast<const char *>(a), right = *static_cast<const char *>(b);
    compared += {left, right, ' '};
    return left - right;
}

const operation operations[] = {
    {.was = "a1b2", .from = "c3d4e5", .now = "c3d4e5", PAIR(mbuf_assign(b, from))},
    {.was = "a1b2", .from = "c3", .now = "a1b2c3", PAIR(mbuf_append(b, from))},
    {.was = "a1d4", .from = "b2c3", .now = "a1b2c3d4", PAIR(mbuf_insert(b, 1, from))},
    {.was = "a1", .from = "b2", .now = "a1b2", PAIR(mbuf_insert(b, 1, from))},
    {.was = "a1", .from = "b2", .gives = -1, PAIR(mbuf_insert(b, 2, from))},
    {.was = "a1b2c3d4", .from = "x0y0", .now = "a1x0y0d4", PAIR(mbuf_write(b, 1, from))},
    {.was = "a1b2", .from = "x0y0", .now = "a1x0y0", PAIR(mbuf_write(b, 1, from))},
    {.was = "a1", .from = "x0", .now = "a1x0", PAIR(mbuf_write(b, 1, from))},
    {.was = "a1", .from = "x0", .gives = -1, PAIR(mbuf_write(b, 2, from))},
    {.was = "z0", .from = "a1b2c3d4", .now = "b2c3d4", PAIR(mbuf_slice(b, from, 1, 4))},
    {.was = "z0", .from = "a1", .now = "", PAIR(mbuf_slice(b, from, 1, 1))},
    {.was = "z0", .from = "a1b2", .gives = -1, PAIR(mbuf_slice(b, from, 2, 1))},
    {.was = "z0", .from = "a1b2", .gives = -1, PAIR(mbuf_slice(b, from, 0, 3))},
    {.was = "a1b2c3", .now = "a1a1b2c3", CALLS(mbuf_memcpy(b, 1, first(3, b)))},
    {.was = "a1", .gives = -1, CALLS(mbuf_memcpy(b, 2, first(1, b)))},
    {.was = "a1", .gives = -1, CALLS(mbuf_memcpy(b, 0, mk_mref(nullptr, 1)))},
    {.was = "a1b2", .now = "a1b2a1b2", CALLS(mbuf_concat(b, first(2, b)))},
    {.was = "a1b2", .gives = -1, CALLS(mbuf_concat(b, first(UINT32_MAX, b)))},
    {.from = "a1", .now = "a1", CALLS(mbuf_push_back(b, first(0, from)))},
    {.was = "a1", .gives = -1, CALLS(mbuf_extend(b, UINT32_MAX))},
    {.was = "a1b2c3d4", .now = "a1d4", CALLS(mbuf_erase(b, 1, 3))},
    {.was = "a1b2", .gives = -1, CALLS(mbuf_erase(b, 2, 1))},
    {.was = "a1b2", .gives = -1, CALLS(mbuf_erase(b, 0, 3))},
    {.was = "a1b2", .now = "b2a1", CALLS(mbuf_reverse(b))},
    {.was = "b2a1", .now = "a1b2", CALLS(mbuf_sort(b, by_first_byte))},
    {.was = "b2a1", .gives = -1, CALLS(mbuf_sort(b, nullptr))},
    {.was = "a1b2", .now = "", CALLS(mbuf_clear(b))},
    {.was = "b2", .from = "a1b2", .gives = 1, .fails = -2, PAIR(mbuf_compare(b, from))},
    {.was = "a1", .from = "a1b2", .gives = -1, .fails = -2, PAIR(mbuf_compare(b, from))},
    {.was = "a1", .from = "a1", .gives = 0, .fails = -2, PAIR(mbuf_compare(b, from))},
    {.was = "a1b2b3", .from = "b3", .gives = 2, CALLS(mbuf_find(b, 0, first(2, from), nullptr))},
    {.was = "b1b2", .from = "b", .gives = 1, CALLS(mbuf_find(b, 1, first(1, from), by_first_byte))},
    {.was = "b1", .from = "b1", .gives = -1, CALLS(mbuf_find(b, 1, first(2, from), nullptr))},
    {.was = "b1", .from = "b1", .gives = -1, CALLS(mbuf_find(b, 0, first(1, from), nullptr))},
    {.was = "b1", .from = "b1", .gives = -1, CALLS(mbuf_find(b, 0, first(3, from), nullptr))},
    {.was = "a1b2", .from = "x0y0", .left = "b2y0", CALLS(mbuf_get(b, 1, first(4, from)))},
    {.was = "a1", .from = "x0", .gives = -1, CALLS(mbuf_get(b, 1, first(2, from)))},
    {.was = "a1", .from = "x0", .gives = -1, CALLS(mbuf_get(b, 0, first(1, from)))},
    {.was = "a1b2", .from = "x0", .now = "a1x0", CALLS(mbuf_set(b, 1, first(2, from)))},
    {.was = "a1", .from = "x0", .gives = -1, CALLS(mbuf_set(b, 1, first(2, from)))},
    {.was = "a1", .from = "x0", .gives = -1, CALLS(mbuf_set(b, 0, first(1, from)))},
    {.was = "a1", .from = "x0y0", .gives = -1, CALLS(mbuf_set(b, 0, first(3, from)))},
    {.was = "a1b2",
     .from = "x0",
     .now = "a1",
     .left = "b2",
     CALLS(mbuf_pop_back(b, first(2, from)))},
    {.from = "x0", .gives = -1, CALLS(mbuf_pop_back(b, first(2, from)))},
};

// Runs the row on an array of this kind, with just enough room or a unit less than the result
// needs: it succeeds when that fits, or the storage grows.
void check(const operation &row, uint32_t kind, uint32_t missing) {
    SCOPED_TRACE(row.name + " on kind "s + std::to_string(kind - heap));
    const uint32_t was = static_cast<uint32_t>(row.was.size() / 2);
    const uint32_t need = static_cast<uint32_t>(row.now.size() / 2);
    const uint32_t room = need > was ? need - missing : was;
    const bool done = kind == heap || need <= room;
    sample to(kind, row.was, room), from(guarded, row.from, 4);
    EXPECT_EQ(row.call(&to.b, &from.b), done ? row.gives : row.fails);
    EXPECT_EQ(bytes(to.b), done ? row.now : row.was);
    EXPECT_EQ(bytes(from.b), done ? row.left : row.from);
    EXPECT_EQ(mbuf_capacity(&to.b), kind == heap && need > room ? std::max(need, 2 * room) : room);
}

} // namespace

TEST(Mbuf, OperationsOnEveryKindOfStorage) {
    for (const operation &row : operations)
        for (uint32_t kind = heap; kind <= locked; kind++)
            for (uint32_t missing : {0U, 1U})
                check(row, kind, missing);
}

TEST(Mbuf, OperationsRefuseBadHeaders) {
    for (const operation &row : operations) {
        SCOPED_TRACE(row.name);
        sample good(guarded, row.was, 9), bad(guarded, row.was, 9);
        mbuf wider = {heap, 4, 0, 0, nullptr}, alias = good.b;
        bad.b.magic = locked + 1;
        EXPECT_EQ(row.call(&bad.b, &good.b), row.fails);
        for (mbuf *second : {&bad.b, &good.b, &wider, &alias})
            EXPECT_TRUE(!row.pair || row.call(&good.b, second) == row.fails);
        EXPECT_EQ(bytes(good.b) + bytes(bad.b), row.was + row.was);
        mbuf_destroy(&wider);
    }
}

TEST(Mbuf, Headers) {
    char text[] = "abc";
    mbuf headers[] = {{heap - 1, 1, 0, 3, text},
                      {external, 1, 4, 3, text},
                      {external, 0, 0, 3, text},
                      {external, 1, 0, 3, nullptr},
                      {heap, 1, 0, MBUF_MAX_CAPACITY, nullptr}};
    for (mbuf &header : headers)
        EXPECT_EQ(mbuf_size(&header), UINT32_MAX) << "row " << &header - headers;
    // Its size in bytes is beyond a size_t of 32 bits.
    mbuf huge = {external, 0x10000, 0, 0x10000, text};
    EXPECT_EQ(mbuf_valid(&huge), sizeof(size_t) > 4 ? 0 : -1);
    for (uint32_t kind = heap; kind <= locked; kind++) {
        sample array(kind, "a1", 3);
        EXPECT_EQ(mbuf_updatesize(&array.b, 4), -1);
        EXPECT_EQ(mbuf_updatesize(&array.b, 3), kind >= external && kind != locked ? 0 : -1);
        EXPECT_EQ(mbuf_size(&array.b), kind >= external && kind != locked ? 3U : 1U);
    }
}

TEST(Mbuf, Iteration) {
    sample array(heap, "a1b2c3", 9);
    char *begin = static_cast<char *>(mbuf_begin(&array.b));
    EXPECT_EQ(begin, array.b.bufptr);
    for (uint32_t i = 0; i <= 3; i++) {
        char *at = begin + 2 * i;
        EXPECT_EQ(mbuf_index(&array.b, at), static_cast<int>(i));
        EXPECT_EQ(mbuf_next(&array.b, at), at + 2);
        EXPECT_EQ(mbuf_access(&array.b, i), i < 3 ? at : nullptr);
    }
    EXPECT_EQ(mbuf_end(&array.b), begin + 6);
    for (char *stray : {begin - 2, begin + 1, begin + 8}) {
        EXPECT_EQ(mbuf_index(&array.b, stray), -1);
        EXPECT_EQ(mbuf_next(&array.b, stray), nullptr);
    }
}

TEST(Mbuf, SortsAndReversesUnitsOfEverySize) {
    for (uint32_t size : {2U, 4U, 8U, 16U, 64U, 600U})
        for (uint32_t count : {0U, 1U, 2U, 5U, 17U}) {
            SCOPED_TRACE(std::to_string(count) + " units of " + std::to_string(size));
            mbuf b = {heap, size, 0, 0, nullptr};
            std::vector<std::string> units;
            for (uint32_t i = 0; i < count; i++) {
                units.push_back(std::string(size, static_cast<char>('A' + i)));
                units[i][0] = "bdacbadcabdbcadcb"[i];
                mbuf_push_back(&b, mk_mref(units[i].data(), size));
            }
            EXPECT_EQ(mbuf_sort(&b, by_first_byte), 0);
            std::stable_sort(units.begin(), units.end(),
                             [](const auto &x, const auto &y) { return x[0] < y[0]; });
            EXPECT_EQ(bytes(b), std::accumulate(units.begin(), units.end(), ""s));
            EXPECT_EQ(mbuf_reverse(&b), 0);
            std::reverse(units.begin(), units.end());
            EXPECT_EQ(bytes(b), std::accumulate(units.begin(), units.end(), ""s));
            mbuf_destroy(&b);
        }
}

TEST(Mbuf, SortComparesHeadsOfRunsInOrder) {
    sample array(guarded, "c0a0b0a1A0", 5);
    compared = "";
    mbuf_sort(&array.b, by_first_byte);
    EXPECT_EQ(compared, "ca ba aa ca cb aA ");
}

// The sanitizer would find a misaligned access to a record.
TEST(Mbuf, RecordsAreAligned) {
    struct record {
        const void *owner;
        long double value;
    };
    alignas(record) char storage[guard_lead<record> + 2 * sizeof(record) + guards_size];
    void *units = _mbuf_init_buffer(storage + guard_lead<record>, 2 * sizeof(record), guarded);
    mbuf arrays[] = {{heap, sizeof(record), 0, 0, nullptr},
                     {MBUF_MAGIC_HEAP_FIXED, sizeof(record), 0, 2, nullptr},
                     {guarded, sizeof(record), 0, 2, units}};
    for (mbuf &b : arrays) {
        for (record each : {record{&b, 1}, record{&b, 2}})
            mbuf_push_back(&b, mk_mref(&each, sizeof each));
        EXPECT_EQ(static_cast<record *>(mbuf_access(&b, 1))->value, 2);
        mbuf_destroy(&b);
    }
}

TEST(Mref, RefusesWhatIsNotTwoMemoriesOfOneLength) {
    char a[] = "abcd", b[] = "abce";
    const struct {
        mref to, from;
        int compared = -1;
        const char *copied = "abcd";
    } rows[] = {
        {.to = {a, 4}, .from = {b, 4}, .compared = -1, .copied = "abce"},
        {.to = {a, 3}, .from = {b, 3}, .compared = 0},
        {.to = {a + 1, 3}, .from = {a, 3}, .compared = 1, .copied = "aabc"},
        {.to = {a, 3}, .from = {b, 4}},
        {.to = {a, 4}, .from = {a, 4}},
        {.to = {a, 0}, .from = {b, 0}},
        {.to = {a, 4}, .from = {nullptr, 4}},
        {.to = {nullptr, 4}, .from = {b, 4}},
    };
}

// What strings and unit arrays have in common: rows of operations, each run on every kind of
// storage, growth, and destruction. A Sample makes a header of one kind and fills its storage.

#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

template <typename Header>
struct operation {
    std::string was = "";  // content of the header operated on
    std::string from = ""; // content of the second one, or of the memory that is referred to
    std::string now = was; // both after success
    std::string left = from;
    int gives = 0;
    int torn = -1; // result for want of room: both stay; unless it is -1, what fits is kept
    int fails = -1;
    bool pair = false;  // takes the second header itself
    bool reads = false; // takes a constant
    const char *name;
    int (*call)(Header *to, Header *from);
};

// What a row does, which is its name as well. Refusals joined by "&" all give -1, successes joined by
// "|" all 0.
#define CALLS(does)                                                                                                    \
    .name = #does, .call = []([[maybe_unused]] auto *to, [[maybe_unused]] auto *from) -> int { return does; }
#define PAIR(does) .pair = true, CALLS(does)
#define READS(does) .pair = true, .reads = true, CALLS(does)
#define REFUSES(does) .gives = -1, CALLS(does)

// With just enough room, or one unit less than the result needs: a row succeeds when the result
// fits or the storage grows.
template <typename Sample>
void check_row(const auto &row, uint32_t kind, uint32_t missing) {
    SCOPED_TRACE(row.name + std::string(" on kind ") + std::to_string(kind - Sample::first));
    const uint32_t was = static_cast<uint32_t>(row.was.size()) / Sample::unit;
    const uint32_t need = static_cast<uint32_t>(row.now.size()) / Sample::unit;
    const uint32_t room = need > was ? need - missing : was;
    const bool grows = kind == Sample::first, constant = kind == Sample::constant;
    const bool done = constant ? row.reads : grows || need <= room;
    const bool cut = !done && !constant && row.torn != -1;
    Sample to(kind, row.was, room), from(Sample::guarded, row.from, 20);
    EXPECT_EQ(row.call(&to.header, &from.header), done ? row.gives : cut ? row.torn : row.fails);
    EXPECT_EQ(to.content(), done ? row.now : cut ? row.now.substr(0, room) : row.was);
    EXPECT_EQ(from.content(), done ? row.left : row.from);
    EXPECT_TRUE(!grows || to.header.capacity == (need > room ? std::max(need, 2 * room) : room));
    EXPECT_EQ(Sample::destroy(&to.header), 0) << "guard words are intact";
}

// Damaged guard words in either place, and the same header twice.
template <typename Sample>
void check_refusal(const auto &row, uint32_t kind) {
    SCOPED_TRACE(row.name + std::string(" on bad headers"));
    Sample good(kind, row.was, 20), bad(kind, row.was, 20);
    constexpr int behind = 20 * Sample::unit + Sample::terminator;
    for (int damage : {-4, -1, behind, behind + 3}) {
        bad.start()[damage] ^= 1;
        EXPECT_EQ(row.call(&bad.header, &good.header), row.fails);
        EXPECT_TRUE(!row.pair || row.call(&good.header, &bad.header) == row.fails);
        EXPECT_EQ(Sample::destroy(&bad.header), -1);
        bad.start()[damage] ^= 1;
    }
    EXPECT_TRUE(!row.pair || row.call(&good.header, &good.header) == row.fails);
    EXPECT_EQ(good.content() + bad.content(), row.was + row.was);
}

template <typename Sample>
void check_operations(const auto &rows) {
    for (const auto &row : rows) {
        for (uint32_t kind = Sample::first; kind <= Sample::last; kind++)
            for (uint32_t missing : {0U, 1U})
                check_row<Sample>(row, kind, missing);
        for (uint32_t kind = Sample::first; kind <= Sample::guarded; kind++)
            check_refusal<Sample>(row, kind);
    }
}

// Only the first kind grows. Destruction wipes what has guard words, and touches no other memory
// of the caller.
template <typename Sample>
void check_storage(uint32_t limit) {
    const uint32_t half = limit / 2, most = limit - 1;
    const uint32_t sizes[][3] = {{0, 1, 1},       {3, 4, 6},     {3, 7, 7},
                                 {0, most, most}, {0, limit, 0}, {half, half + 1, half}};
    for (const auto &[capacity, need, grown] : sizes) {
        Sample growing(Sample::first, "", capacity);
        EXPECT_EQ(Sample::reserve(&growing.header, need), grown >= need ? 0 : -1) << need;
        EXPECT_EQ(growing.header.capacity, grown);
    }
    for (uint32_t kind = Sample::first; kind <= Sample::last; kind++) {
        Sample gone(kind, "text", 4);
        const bool grows = kind == Sample::first;
        EXPECT_EQ(Sample::reserve(&gone.header, 1), grows ? 0 : -1);
        EXPECT_EQ(Sample::extend(&gone.header, 7), grows ? 0 : -1);
        EXPECT_TRUE(!grows || gone.header.capacity == 4 / Sample::unit + 7);
        const std::vector<char> before = gone.data, wiped(before.size());
        EXPECT_EQ(Sample::destroy(&gone.header), 0);
        EXPECT_EQ(gone.data, kind == Sample::guarded ? wiped : before);
        EXPECT_EQ(Sample::destroy(&gone.header), -1);
    }
}

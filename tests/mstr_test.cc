#include "lib/mstr.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

using namespace zelta;
using namespace std::literals;

namespace {

constexpr uint32_t limit = MSTR_MAX_CAPACITY;
constexpr uint32_t heap = MSTR_MAGIC_HEAP, guarded = MSTR_MAGIC_GUARDED, array = MSTR_MAGIC_ARRAY,
                   cstr = MSTR_MAGIC_CSTR, constant = MSTR_MAGIC_CONST;

// A string of one kind. The text is written in place, so that lastlen is stale: too small in some
// kinds, too large in others.
struct sample {
    sample(uint32_t kind, const char *text, uint32_t room) : s{kind, 0, room, nullptr} {
        data.reset(new char[kind == guarded ? mstr_storage(room) : room + 1]);
        if (kind == constant)
            s = {kind, 0, 0, const_cast<char *>(text)};
        else if (kind == guarded)
            s.c_str = _mstr_init_data(data.get(), room, kind);
        else if (kind != heap)
            s.c_str = _mstr_init_buffer(data.get(), room + 1);
        EXPECT_EQ(mstr_valid(&s), 0);
        if (kind != constant)
            strcpy(s.c_str, text);
        if (kind == guarded || kind == cstr)
            s.lastlen = room;
    }
    ~sample() {
        mstr_destroy(&s);
    }
    std::unique_ptr<char[]> data;
    mstr s;
};

int read_from(const std::string &bytes, mstr *s, char delimiter = '\n') {
    FILE *stream = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
    int result = mstr_getdelim(s, stream, delimiter);
    EXPECT_EQ(ftell(stream), result < 0 ? 0 : long{s->lastlen}) << "bytes read and not kept";
    fclose(stream);
    return result;
}

struct operation {
    const char *was = "";       // text of the string operated on
    const char *from = nullptr; // text of the second one; null for an operation without
    const char *now = was;      // texts after success
    const char *left = from;
    int gives = 0;
    int torn = -1; // result when the room is short: the texts stay; unless -1, it keeps what fits
    int fails = -1;
    bool reads = false; // takes a constant string
    const char *name;
    int (*call)(mstr *s, mstr *from);
};

// What a row does, which is its name as well.
#define CALLS(does)                                                                                \
    .name = #does,                                                                                 \
    .call = []([[maybe_unused]] mstr *s, [[maybe_unused]] mstr *from) -> int { return does; }
#define READS(does) .reads = true, CALLS(does)

mstr a = {constant, 0, 0, const_cast<char *>("a")};
const std::string endless(limit, 'x');

const operation operations[] = {
    {.was = "old", .from = "longer", .now = "longer", CALLS(mstr_assign(s, from))},
    {.was = "old", .from = "er", .now = "older", CALLS(mstr_append(s, from))},
    {.was = "ad", .from = "bc", .now = "abcd", CALLS(mstr_insert(s, 1, from))},
    {.was = "ab", .from = "c", .now = "abc", CALLS(mstr_insert(s, 2, from))},
    {.was = "ab", .from = "c", .gives = -1, CALLS(mstr_insert(s, 3, from))},
    {.was = "old", .from = "abcdef", .now = "cdef", CALLS(mstr_slice(s, from, 2, 6))},
    {.was = "old", .from = "abc", .now = "", CALLS(mstr_slice(s, from, 3, 3))},
    {.was = "old", .from = "abc", .gives = -1, CALLS(mstr_slice(s, from, 2, 1))},
    {.was = "old", .from = "abc", .gives = -1, CALLS(mstr_slice(s, from, 0, 4))},
    {.was = "old", .now = "longer", CALLS(mstr_strcpy(s, "longer"))},
    {.was = "old", .gives = -1, CALLS(mstr_strcpy(s, nullptr))},
    {.was = "old", .gives = -1, CALLS(mstr_strcpy(s, s->c_str))},
    {.was = "old", .gives = -1, CALLS(mstr_strcpy(s, endless.c_str()))},
    {.was = "old", .now = "older", CALLS(mstr_strcat(s, "er"))},
    {.was = "old", .gives = -1, CALLS(mstr_strcat(s, s->c_str + s->capacity))},
    {.was = "old", .gives = -1, CALLS(mstr_extend(s, UINT32_MAX))},
    {.was = "abcde", .now = "ade", CALLS(mstr_erase(s, 1, 3))},
    {.was = "abc", .gives = -1, CALLS(mstr_erase(s, 2, 1))},
    {.was = "abc", .gives = -1, CALLS(mstr_erase(s, 0, 4))},
    {.was = "abcdef", .now = "cde", CALLS(mstr_trim(s, 2, 1))},
    {.was = "abc", .now = "", CALLS(mstr_trim(s, 1, 2))},
    {.was = "abc", .gives = -1, CALLS(mstr_trim(s, 2, UINT32_MAX))},
    {.was = "abc", .now = "", CALLS(mstr_clear(s))},
    {.was = "  k = v \n", .now = "k = v", .gives = 4, CALLS(mstr_strip(s, true, true))},
    {.was = "\t\vk ", .now = "k ", .gives = 2, CALLS(mstr_strip(s, true, false))},
    {.was = " k\f\r", .now = " k", .gives = 2, CALLS(mstr_strip(s, false, true))},
    {.was = " \n ", .now = "", .gives = 3, CALLS(mstr_strip(s, true, true))},
    {.was = "aa", .from = "aa", .now = "aaaa", .gives = 2, CALLS(mstr_replace(s, &a, from, 0))},
    {.was = "aaa", .from = "aa", .now = "aaaaa", .gives = 2, CALLS(mstr_replace(s, &a, from, 2))},
    {.was = "aba", .from = "", .now = "b", .gives = 2, CALLS(mstr_replace(s, &a, from, 0))},
    {.was = "aa", .from = "a", .gives = -1, CALLS(mstr_replace(s, from, from, 0))},
    {.was = "aa", .from = "a", .gives = -1, CALLS(mstr_replace(s, s, from, 0))},
    {.from = "bcad", .now = "bc", .left = "d", .gives = 1, CALLS(mstr_partition(s, from, &a))},
    {.from = "b", .gives = -1, CALLS(mstr_partition(s, from, from))},
    {.from = "b", .gives = -1, CALLS(mstr_partition(s, from, s))},
    {.from = "b::c",
     .now = "b",
     .left = "c",
     .gives = 1,
     CALLS(mstr_partition_cstr(s, from, "::"))},
    {.from = "b", .now = "b", .left = "", CALLS(mstr_partition_cstr(s, from, "b "))},
    {.was = "b", .from = "", .now = "", CALLS(mstr_partition_cstr(s, from, ""))},
    {.from = "b", .gives = -1, CALLS(mstr_partition_cstr(s, from, s->c_str))},
    {.from = "b", .gives = -1, CALLS(mstr_partition_cstr(s, from, from->c_str))},
    {.was = "old", .now = "7 up", .gives = 4, .torn = 4, CALLS(mstr_sprintf(s, "%d %s", 7, "up"))},
    {.was = "old", .gives = -1, CALLS(mstr_sprintf(s, "old%ls", L"\xd800"))},
    {.was = "old", .now = "x=1\n", .torn = 1, CALLS(read_from("x=1\ny=2\n", s))},
    {.was = "older", .now = "y=2", .gives = 2, CALLS(read_from("y=2", s))},
    {.was = "old", .now = "a\xff", CALLS(read_from("a\xff", s, '\xff'))},
    {.was = "xxabab", .from = "ab", .gives = 2, READS(mstr_find(s, 2, from))},
    {.was = "xxabab", .from = "ab", .gives = 4, READS(mstr_find(s, 4, from))},
    {.was = "xxabab", .from = "ab", .gives = -1, READS(mstr_find(s, 5, from))},
    {.was = "ab", .from = "abc", .gives = -1, READS(mstr_find(s, 0, from))},
    {.was = "abab", .gives = 2, READS(mstr_find_cstr(s, 1, "ab"))},
    {.was = "aaaaa", .from = "aa", .gives = 2, READS(mstr_count(s, from))},
    {.was = "b", .from = "abc", .gives = 1, .fails = -2, READS(mstr_compare(s, from))},
    {.was = "a~", .from = "a\xff", .gives = -1, .fails = -2, READS(mstr_compare(s, from))},
    {.was = "ab", .from = "ab", .gives = 0, .fails = -2, READS(mstr_compare(s, from))},
    {.was = "abc", .gives = 3, READS(mstr_length(s))},
};

// Runs the row on a string of this kind, with just enough room or a character less than the result
// needs: it succeeds when that fits, or the storage grows.
void check(const operation &row, uint32_t kind, uint32_t missing) {
    SCOPED_TRACE(row.name + " on kind "s + std::to_string(kind - heap));
    const uint32_t was = static_cast<uint32_t>(strlen(row.was));
    const uint32_t need = static_cast<uint32_t>(strlen(row.now));
    const uint32_t room = need > was ? need - missing : was;
    const bool done = kind == constant ? row.reads : kind == heap || need <= room;
    const bool cut = !done && kind != constant && row.torn >= 0;
    sample to(kind, row.was, room), from(guarded, row.from != nullptr ? row.from : "", 20);
    EXPECT_EQ(row.call(&to.s, &from.s), done ? row.gives : cut ? row.torn : row.fails);
    EXPECT_EQ(to.s.c_str, done ? row.now : cut ? std::string(row.now, room) : row.was);
    EXPECT_STREQ(from.s.c_str, row.from == nullptr ? "" : done ? row.left : row.from);
    EXPECT_TRUE(!done || (mstr_valid(&to.s) == 0 && to.s.lastlen == need));
    EXPECT_TRUE(kind != heap || to.s.capacity == (need <= room ? room : std::max(need, 2 * room)));
}

} // namespace

TEST(Mstr, OperationsOnEveryKindOfStorage) {
    for (const operation &row : operations)
        for (uint32_t kind = heap; kind <= constant; kind++)
            for (uint32_t missing : {0U, 1U})
                check(row, kind, missing);
}

TEST(Mstr, OperationsRefuseBadHeaders) {
    for (const operation &row : operations) {
        SCOPED_TRACE(row.name);
        sample good(guarded, row.was, 20), bad(guarded, row.was, 20);
        bad.s.magic = constant + 1;
        EXPECT_EQ(row.call(&bad.s, &good.s), row.fails);
        EXPECT_STREQ(bad.s.c_str, row.was);
        EXPECT_TRUE(row.from == nullptr || row.call(&good.s, &bad.s) == row.fails);
        EXPECT_TRUE(row.from == nullptr || row.call(&good.s, &good.s) == row.fails);
    }
}

TEST(Mstr, InvalidHeaders) {
    char text[] = "abc", full[] = {'f', 'u', 'l', 'l'};
    char *one_too_many = const_cast<char *>(endless.c_str());
    mstr headers[] = {{heap - 1, 0, 3, text},    {array, 4, 3, text},
                      {array, 0, 3, full},       {guarded, 0, 3, nullptr},
                      {heap, 0, limit, nullptr}, {constant, 0, 0, one_too_many}};
    for (mstr &header : headers)
        EXPECT_EQ(mstr_capacity(&header), UINT32_MAX) << "row " << &header - headers;
    mstr longest = {constant, 0, 0, one_too_many + 1};
    EXPECT_EQ(mstr_capacity(&longest), limit - 1);
    EXPECT_EQ(mstr_get(headers), nullptr);
}

TEST(Mstr, GetdelimKeepsEveryByte) {
    sample to(heap, "old", 3);
    EXPECT_EQ(read_from("\xff\0:\n:"s, &to.s), 0);
    EXPECT_EQ(std::string(to.s.c_str, to.s.lastlen), "\xff\0:\n"s);
    FILE *directory = fopen("/", "r");
    ungetc('x', directory);
    EXPECT_EQ(mstr_getline(&to.s, directory), -1) << "read error";
    EXPECT_STREQ(to.s.c_str, "x");
    fclose(directory);
    EXPECT_EQ(mstr_getline(&to.s, nullptr), -1);
}

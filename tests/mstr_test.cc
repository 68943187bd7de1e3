#include "lib/mstr.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/operations.h"

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
constexpr uint32_t heap = MSTR_MAGIC_HEAP, array = MSTR_MAGIC_ARRAY;

// The text is written in place, so that lastlen is stale: in some kinds too large, or too small.
struct sample {
    static constexpr uint32_t first = heap, last = MSTR_MAGIC_CONST, constant = last, unit = 1,
                              guarded = MSTR_MAGIC_GUARDED, terminator = 1;
    static constexpr auto destroy = mstr_destroy;
    static constexpr auto reserve = mstr_reserve, extend = mstr_extend;

    sample(uint32_t kind, const std::string &text, uint32_t room)
        : data(room + 1 + (kind == guarded ? guards_size : 0)), header{kind, 0, room, nullptr} {
        if (kind == guarded)
            header.c_str = _mstr_init_data(data.data(), room, kind);
        else if (kind != heap)
            header.c_str = _mstr_init_buffer(data.data(), room + 1);
        EXPECT_EQ(mstr_valid(&header), 0);
        strcpy(header.c_str, text.c_str());
        if (kind == constant)
            header.capacity = 0;
        if (kind == guarded || kind == array)
            header.lastlen = room;
    }
    ~sample() {
        mstr_destroy(&header);
    }
    char *start() {
        return header.c_str;
    }
    std::string content() {
        return start();
    }
    std::vector<char> data;
    mstr header;
};

int read_from(const std::string &bytes, mstr *s, char delimiter = '\n') {
    FILE *stream = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
    int result = mstr_getdelim(s, stream, delimiter);
    EXPECT_EQ(ftell(stream), result < 0 ? 0 : int64_t{s->lastlen}) << "bytes read and not kept";
    fclose(stream);
    return result;
}

mstr a = {MSTR_MAGIC_CONST, 0, 0, const_cast<char *>("a")};
const std::string endless(limit, 'x'), spaces(299, ' ');

const operation<mstr> operations[] = {
    {.was = "old", .from = "longer", .now = "longer", PAIR(mstr_assign(to, from))},
    {.was = "old", .from = "er", .now = "older", PAIR(mstr_append(to, from))},
    {.was = "ad", .from = "bc", .now = "abcd", PAIR(mstr_insert(to, 1, from))},
    {.was = "ab", .from = "c", .now = "abc", PAIR(mstr_insert(to, 2, from))},
    {.was = "old", .from = "abcdef", .now = "cdef", PAIR(mstr_slice(to, from, 2, 6))},
    {.was = "old", .from = "abc", .now = "", PAIR(mstr_slice(to, from, 3, 3))},
    {.was = "old", .from = "c", REFUSES(mstr_insert(to, 4, from))},
    {.was = "old", .from = "c", REFUSES(mstr_slice(to, from, 1, 0) & mstr_slice(to, from, 0, 2))},
    {.was = "old", .now = "longer", CALLS(mstr_strcpy(to, "longer"))},
    {.was = "old", .now = "older", CALLS(mstr_strcat(to, "er"))},
    {.was = "old", REFUSES(mstr_strcpy(to, nullptr) & mstr_strcat(to, nullptr))},
    {.was = "old", REFUSES(mstr_strcpy(to, to->c_str) & mstr_strcat(to, to->c_str + 3))},
    {.was = "old", REFUSES(mstr_strcpy(to, endless.c_str()) & mstr_extend(to, UINT32_MAX))},
    {.was = "abcdef", .now = "aef", CALLS(mstr_erase(to, 1, 4) | mstr_erase(to, 1, 1))},
    {.was = "abcdef", .now = "c", CALLS(mstr_trim(to, 2, 1) | mstr_trim(to, 0, 2))},
    {.was = "abc", REFUSES(mstr_erase(to, 2, 1) & mstr_erase(to, 0, 4))},
    {.was = "abc", REFUSES(mstr_trim(to, 2, UINT32_MAX) & mstr_trim(to, 2, 2))},
    {.was = "abc", .now = "", CALLS(mstr_clear(to) == 0 ? to->c_str[2] : -1)},
    {.was = "  k = v \n", .now = "k = v", .gives = 4, CALLS(mstr_strip(to, true, true))},
    {.was = "\t\vk ", .now = "k ", .gives = 2, CALLS(mstr_strip(to, true, false))},
    {.was = " k\f\r", .now = " k", .gives = 2, CALLS(mstr_strip(to, false, true))},
    {.was = " \n ", .now = "", .gives = 3, CALLS(mstr_strip(to, true, true))},
    {.was = "aa", .from = "aa", .now = "aaaa", .gives = 2, PAIR(mstr_replace(to, &a, from, 0))},
    {.was = "aaa", .from = "b", .now = "bba", .gives = 2, PAIR(mstr_replace(to, &a, from, 2))},
    {.was = "aba", .from = "", .now = "b", .gives = 2, PAIR(mstr_replace(to, &a, from, 0))},
    {.was = "a", REFUSES(mstr_replace(to, from, from, 0) & mstr_replace(to, to, from, 0))},
    {.from = "bcad", .now = "bc", .left = "d", .gives = 1, PAIR(mstr_partition(to, from, &a))},
    {.from = "b::", .now = "b", .left = "", .gives = 1, PAIR(mstr_partition_cstr(to, from, "::"))},
    {.was = "b", .from = "", .now = "", PAIR(mstr_partition_cstr(to, from, ""))},
    {.from = "b", REFUSES(mstr_partition(to, from, from) & mstr_partition(to, from, to))},
    {.from = "b", REFUSES(mstr_partition_cstr(to, from, nullptr) & mstr_partition_cstr(to, from, from->c_str))},
    {.from = "b", REFUSES(mstr_partition_cstr(to, from, to->c_str))},
    {.now = "7u", .gives = 2, .torn = 2, CALLS(mstr_sprintf(to, "%d%s", 7, "u"))},
    {.was = "old", .now = "", CALLS(mstr_sprintf(to, "%s", ""))},
    {.now = spaces + "u", .gives = 300, .torn = 300, CALLS(mstr_sprintf(to, "%300s", "u"))},
    {.was = "abc", REFUSES(mstr_sprintf(to, "xy%ls", L"\xd800"))},
    {.was = "old", .now = "x=1\n", .torn = 1, CALLS(read_from("x=1\ny=2\n", to))},
    {.was = "four", .now = "y=2", .gives = 2, CALLS(read_from("y=2", to))},
    {.was = "older", .now = "y=2", CALLS(read_from("y=2", to) == 2 ? to->c_str[4] : -1)},
    {.was = "old", .now = "a\xff", CALLS(read_from("a\xff\n", to, '\xff'))},
    {.was = "xxabab", .from = "ab", .gives = 4, READS(mstr_find(to, 4, from))},
    {.was = "xxabab", .from = "ab", .gives = -1, READS(mstr_find(to, 8, from))},
    {.was = "ab", .from = "abc", .gives = -1, READS(mstr_find(to, 0, from))},
    {.was = "abab", .gives = 2, .reads = true, CALLS(mstr_find_cstr(to, 1, "ab"))},
    {.was = "abab", REFUSES(mstr_find_cstr(to, 0, nullptr))},
    {.was = "aaaa", .from = "aa", .gives = 2, READS(mstr_count(to, from))},
    {.was = "b", .from = "abc", .gives = 1, .fails = -2, READS(mstr_compare(to, from))},
    {.was = "a~", .from = "a\xff", .gives = -1, .fails = -2, READS(mstr_compare(to, from))},
    {.was = "ab", .from = "ab", .gives = 0, .fails = -2, READS(mstr_compare(to, from))},
    {.was = "abc", .gives = 3, .reads = true, CALLS(mstr_length(to))},
};

} // namespace

TEST(Mstr, Operations) {
    check_operations<sample>(operations);
}

TEST(Mstr, Storage) {
    check_storage<sample>(limit);
    mstr *s = mstr_new(limit - 1);
    EXPECT_EQ(mstr_capacity(s), limit - 1);
    EXPECT_EQ(mstr_delete(&s), 0);
    EXPECT_EQ(mstr_delete(&s), -1);
    EXPECT_EQ(mstr_new(limit), nullptr);
}

TEST(Mstr, InvalidHeaders) {
    char text[] = "abc", full[] = {'f', 'u', 'l', 'l'};
    char *one_too_many = const_cast<char *>(endless.c_str());
    mstr headers[] = {{heap - 1, 0, 3, text},
                      {sample::last + 1, 0, 3, text},
                      {array, 4, 3, text},
                      {array, 0, 3, full},
                      {array, 0, 3, nullptr},
                      {heap, 0, limit, nullptr},
                      {MSTR_MAGIC_CONST, 0, 0, one_too_many}};
    for (mstr &header : headers) {
        EXPECT_EQ(mstr_valid(&header), -1) << "row " << &header - headers;
        EXPECT_EQ(mstr_capacity(&header), UINT32_MAX);
    }
    mstr longest = {MSTR_MAGIC_CONST, 0, 0, one_too_many + 1};
    EXPECT_EQ(mstr_capacity(&longest), limit - 1);
    EXPECT_EQ(mstr_get(headers), nullptr);
}

TEST(Mstr, ReadErrorKeepsWhatWasRead) {
    int silent[2];
    ASSERT_EQ(pipe2(silent, O_NONBLOCK), 0);
    for (FILE *stream : {fopen("/", "r"), fdopen(silent[0], "r")}) {
        sample to(heap, "", 9);
        ungetc('x', stream);
        EXPECT_EQ(mstr_getline(&to.header, stream), -1);
        EXPECT_EQ(std::string(to.start(), to.header.lastlen), "x");
        fclose(stream);
    }
    close(silent[1]);
}

TEST(Mstr, FreedStorageIsWiped) {
    sample s(heap, "secret", 6);
    EXPECT_EQ(mstr_reserve(&s.header, 7), 0);
    EXPECT_EQ(mstr_destroy(&s.header), 0);
    EXPECT_FALSE(secret_freed);
    char *volatile copy = strdup("secret");
    free(copy);
    EXPECT_TRUE(secret_freed) << "what is freed is not looked at";
}

// Strings and unit arrays against what the C and C++ libraries have for the same work.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/rows.h"
#include "lib/mbuf.h"
#include "lib/mstr.h"

using namespace zelta;
using benchmark::DoNotOptimize;
using zelta::bench::add;
using zelta::bench::time_each;

namespace {

// --- strings ---

mstr constant(const char *text) {
    return {.magic = MSTR_MAGIC_CONST, .c_str = const_cast<char *>(text)};
}

template <typename Work>
double time_repeated(size_t count, Work work) {
    return time_each(count, [&] {
        for (size_t i = 0; i < count; i++)
            work();
    });
}

void add_append() {
    static const char piece[] = "sixteen letters.";
    const auto ours = [] {
        mstr s = {.magic = MSTR_MAGIC_HEAP}, from = constant(piece);
        for (int i = 0; i < 16; i++)
            mstr_append(&s, &from);
        DoNotOptimize(s.c_str);
        mstr_destroy(&s);
    };
    const auto theirs = [] {
        std::string s;
        const std::string from = piece;
        for (int i = 0; i < 16; i++)
            s += from;
        DoNotOptimize(s.data());
    };
    add({.name = "append 16 bytes up to 256, std::string",
         .target = 4.5,
         .ours = [=] { return time_repeated(2000, ours); },
         .theirs = [=] { return time_repeated(2000, theirs); }});
}

void add_records(size_t length, double target) {
    const size_t count = 2000000 / length;
    FILE *file = tmpfile();
    const std::string record(length - 1, 'x');
    for (size_t i = 0; i < count; i++)
        fprintf(file, "%s\n", record.c_str());
    const auto ours = [=] {
        mstr line = {.magic = MSTR_MAGIC_HEAP};
        while (mstr_getline(&line, file) == 0)
            DoNotOptimize(line.c_str);
        mstr_destroy(&line);
    };
    const auto theirs = [=] {
        char *line = nullptr;
        size_t room = 0;
        while (getline(&line, &room, file) > 0)
            DoNotOptimize(line);
        free(line);
    };
    const auto from_start = [=](auto work) {
        rewind(file);
        return time_each(count, work);
    };
    add({.name = "record of " + std::to_string(length) + " bytes, getline",
         .target = target,
         .ours = [=] { return from_start(ours); },
         .theirs = [=] { return from_start(theirs); }});
}

void add_find(size_t length, const char *needle, double target) {
    auto text = std::make_shared<std::string>(length, ' ');
    for (size_t i = 0; i < length; i++)
        (*text)[i] = static_cast<char>('a' + i * i % 23);
    text->replace(length - strlen(needle), std::string::npos, needle);
    const auto ours = [=] {
        mstr s = {.magic = MSTR_MAGIC_CSTR,
                  .capacity = static_cast<uint32_t>(length),
                  .c_str = text->data()};
        mstr wanted = constant(needle);
        return time_repeated(5000, [&] { DoNotOptimize(mstr_find(&s, 0, &wanted)); });
    };
    const auto theirs = [=] {
        const size_t size = strlen(needle);
        return time_repeated(
            5000, [&] { DoNotOptimize(memmem(text->data(), text->size(), needle, size)); });
    };
    add({.name = "find " + std::to_string(strlen(needle)) + " in " + std::to_string(length) +
                 " bytes, memmem",
         .target = target,
         .ours = ours,
         .theirs = theirs});
}

void add_partition() {
    static const char text[] = "one,two,three,four,five,six,seven,eight";
    const auto ours = [] {
        mstr whole = constant(text), comma = constant(",");
        mstr source = {.magic = MSTR_MAGIC_HEAP}, head = {.magic = MSTR_MAGIC_HEAP};
        const double taken = time_repeated(2000, [&] {
            mstr_assign(&source, &whole);
            while (mstr_partition(&head, &source, &comma) == 1)
                DoNotOptimize(head.c_str);
        });
        mstr_destroy(&source);
        mstr_destroy(&head);
        return taken;
    };
    const auto theirs = [] {
        const std::string whole = text, comma = ",";
        std::string source, head;
        return time_repeated(2000, [&] {
            source = whole;
            for (size_t at; (at = source.find(comma)) != std::string::npos;) {
                head.assign(source, 0, at);
                source.erase(0, at + comma.size());
                DoNotOptimize(head.data());
            }
            head = source;
            source.clear();
        });
    };
    add({.name = "partition into 8 fields, std::string",
         .target = 3.3,
         .ours = ours,
         .theirs = theirs});
}

void add_format() {
    const auto ours = [] {
        char array[64];
        mstr s = {.magic = MSTR_MAGIC_ARRAY,
                  .capacity = sizeof array - 1,
                  .c_str = _mstr_init_buffer(array, sizeof array)};
        return time_repeated(5000, [&] {
            DoNotOptimize(mstr_sprintf(&s, "%s/dhclient-%s.%d", "/var/run", "usb0", 4711));
        });
    };
    const auto theirs = [] {
        char array[64];
        return time_repeated(5000, [&] {
            DoNotOptimize(
                snprintf(array, sizeof array, "%s/dhclient-%s.%d", "/var/run", "usb0", 4711));
        });
    };
    add({.name = "format 23 bytes, snprintf", .target = 1.05, .ours = ours, .theirs = theirs});
}

// --- unit arrays ---

constexpr uint32_t million = 1000000;

// A unit of Size bytes, ordered by its first four.
template <size_t Size>
struct unit {
    uint32_t key;
    std::array<char, Size - sizeof(uint32_t)> rest;
};

template <>
struct unit<4> {
    uint32_t key;
};

template <typename Unit>
int by_key(const void *a, const void *b) {
    const uint32_t left = static_cast<const Unit *>(a)->key;
    const uint32_t right = static_cast<const Unit *>(b)->key;
    return (left > right) - (left < right);
}

template <typename Unit>
mbuf array_of(std::vector<Unit> &units) {
    return {.magic = MBUF_MAGIC_EXTERN,
            .unitsize = sizeof(Unit),
            .used = static_cast<uint32_t>(units.size()),
            .capacity = static_cast<uint32_t>(units.size()),
            .bufptr = units.data()};
}

template <typename Unit>
std::string named(const char *operation, const char *peer) {
    return std::string(operation) + " " + std::to_string(sizeof(Unit)) + "-byte units, " + peer;
}

template <typename Unit>
void add_push(double target) {
    static Unit units[1024] = {};
    const auto ours = [] {
        mbuf b = {.magic = MBUF_MAGIC_HEAP, .unitsize = sizeof(Unit), .bufptr = nullptr};
        for (uint32_t i = 0; i < million; i++)
            mbuf_push_back(&b, {.ptr = &units[i % 1024], .len = sizeof(Unit)});
        DoNotOptimize(b.bufptr);
        mbuf_destroy(&b);
    };
    const auto theirs = [] {
        std::vector<Unit> v;
        for (uint32_t i = 0; i < million; i++)
            v.push_back(units[i % 1024]);
        DoNotOptimize(v.data());
    };
    add({.name = named<Unit>("push_back", "std::vector"),
         .target = target,
         .ours = [=] { return time_each(million, ours); },
         .theirs = [=] { return time_each(million, theirs); }});
}

enum class order { random, sorted, reversed };

template <typename Unit>
std::vector<Unit> units_in(order wanted) {
    std::vector<Unit> units(million);
    std::minstd_rand next(1);
    for (uint32_t i = 0; i < million; i++)
        units[i].key = wanted == order::random   ? static_cast<uint32_t>(next())
                       : wanted == order::sorted ? i
                                                 : million - i;
    return units;
}

// Array operations that change 10^6 units in place; the time is divided by the number of units.
template <typename Unit, typename Ours, typename Theirs>
void add_changing(const std::string &name, double target, order wanted, Ours ours, Theirs theirs) {
    const auto fresh = [=](auto work) {
        static std::vector<Unit> units;
        units = units_in<Unit>(wanted);
        return time_each(million, [&] { work(units); });
    };
    add({.name = name,
         .target = target,
         .ours =
             [=] {
                 return fresh([=](std::vector<Unit> &units) {
                     mbuf b = array_of(units);
                     ours(&b);
                 });
             },
         .theirs = [=] { return fresh(theirs); }});
}

template <typename Unit>
void add_arrays() {
    using units = std::vector<Unit>;
    add_push<Unit>(sizeof(Unit) > 4 ? 1.3 : 0);
    add_changing<Unit>(
        named<Unit>("erase ten of 10^6", "std::vector"), 1.0, order::sorted,
        [](mbuf *b) {
            for (uint32_t i = 0; i < 10; i++)
                mbuf_erase(b, i, i + 1);
        },
        [](units &v) {
            for (int i = 0; i < 10; i++)
                v.erase(v.begin() + i);
        });
    add_changing<Unit>(
        named<Unit>("find the last of 10^6", "std::find_if"), 0, order::sorted,
        [](mbuf *b) {
            Unit last = *static_cast<Unit *>(mbuf_access(b, million - 1));
            DoNotOptimize(mbuf_find(b, 0, mk_mref(&last, sizeof last), nullptr));
        },
        [](units &v) {
            const Unit last = v.back();
            DoNotOptimize(std::find_if(v.begin(), v.end(), [&](const Unit &each) {
                return memcmp(&last, &each, sizeof each) == 0;
            }));
        });
    add_changing<Unit>(named<Unit>("reverse 10^6", "std::reverse"), 1.1, order::sorted,
                       mbuf_reverse, [](units &v) { std::reverse(v.begin(), v.end()); });
}

template <typename Unit>
void add_sorts(const char *name, order wanted, double most_of_qsort, double most_of_stable_sort) {
    const auto ours = [](mbuf *b) { mbuf_sort(b, by_key<Unit>); };
    add_changing<Unit>(
        named<Unit>(name, "qsort"), most_of_qsort, wanted, ours,
        [](std::vector<Unit> &v) { qsort(v.data(), v.size(), sizeof(Unit), by_key<Unit>); });
    add_changing<Unit>(named<Unit>(name, "std::stable_sort"), most_of_stable_sort, wanted, ours,
                       [](std::vector<Unit> &v) {
                           std::stable_sort(v.begin(), v.end(), [](const Unit &a, const Unit &b) {
                               return a.key < b.key;
                           });
                       });
}

template <typename Unit>
void add_orders() {
    add_sorts<Unit>("sort 10^6 random", order::random, 0.75, 1.4);
    add_sorts<Unit>("sort 10^6 sorted", order::sorted, sizeof(Unit) <= 16 ? 0.8 : 0, 0);
    add_sorts<Unit>("sort 10^6 reversed", order::reversed, 0, 0);
}

} // namespace

int main(int argc, char **argv) {
    add_append();
    add_records(40, 1.6);
    add_records(4000, 3.5);
    add_find(4000, "=password", 1.1);
    add_find(4000, "=", 2);
    add_partition();
    add_format();
    add_arrays<unit<4>>();
    add_arrays<unit<16>>();
    add_arrays<unit<64>>();
    add_orders<unit<4>>();
    add_orders<unit<16>>();
    add_orders<unit<64>>();
    return zelta::bench::run(argc, argv);
}

// Random operations on strings and unit arrays, each compared with a model: bytes, a unit size and a
// capacity. An operation is a line of text: a letter, five operands of one character each, and the
// rest, which is a text. So sequences can be written by hand, and no input is malformed.

#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/target.h"
#include "lib/guard.h"

namespace zelta::test {

using fuzz::require;

// What tells strings and unit arrays apart. Each model specialises it.
template <typename Header>
struct family;

template <typename Header>
struct slot {
    using type = family<Header>;
    Header header = {};
    std::unique_ptr<char[]> storage = {}; // caller's; of exactly its size, so that an overrun is noticed
    char *damaged = nullptr;              // the byte that makes the header invalid
    // The model.
    uint32_t kind = 0; // 0: none
    uint32_t unitsize = 1, capacity = 0;
    std::string content = {};

    char *data() const { return type::data(header); }
    size_t units() const { return content.size() / std::max(unitsize, 1U); }
    size_t size() const { // of the storage, without guard words
        return size_t{unitsize} * capacity + type::terminator;
    }
    bool owned() const { return kind < type::guarded; }
    bool framed() const { return kind <= type::guarded; }
    bool valid() const { return kind != 0 && damaged == nullptr; }
    bool writable() const { return valid() && kind != type::constant; }
    bool grow(uint64_t need) {
        const uint64_t larger = std::max(need, uint64_t{capacity} * 2);
        if (kind == type::first && capacity < need && larger < type::limit)
            capacity = static_cast<uint32_t>(larger);
        return capacity >= need;
    }
    int reserve(uint64_t need) { return valid() && kind == type::first && grow(need) ? 0 : -1; }
    // Replaces the units [start, end), of which those behind the last are none.
    int replace(uint64_t start, uint64_t end, const std::string &by) {
        const uint64_t last = std::min<uint64_t>(end, units());
        if (!writable() || start > last || !grow(units() - (last - start) + by.size() / unitsize))
            return -1;
        content.replace(static_cast<size_t>(start) * unitsize, static_cast<size_t>(last - start) * unitsize, by);
        return 0;
    }
    int assign(const std::string &by) { return replace(0, UINT32_MAX, by); }
    int erase(uint64_t start, uint64_t end) { return end > units() || start > end ? -1 : replace(start, end, ""); }
    // The units [start, end) of the content, which must be there.
    std::string part(size_t start, size_t end) const {
        return content.substr(start * unitsize, (end - start) * unitsize);
    }
    int number(uint64_t value) const { // as a result of an operation that only reads
        return valid() ? static_cast<int>(value) : -1;
    }
};

template <typename Header>
struct operands {
    slot<Header> &a, &b, &c;
    uint32_t m, n;
    std::string line, raw;
    const char *text = raw.c_str();        // up to a NUL
    std::string expected = {}, given = {}; // what the operation hands out
};

template <typename Header>
struct row {
    char letter;
    int (*model)(operands<Header> &o);
    int (*call)(operands<Header> &o);
};

// clang-format off
#define ROW(letter, model, call) {letter, \
    []([[maybe_unused]] auto &o) -> int { return model; }, []([[maybe_unused]] auto &o) -> int { return call; }}
// clang-format on

inline bool zeros(const char *bytes, size_t size) {
    return std::all_of(bytes, bytes + size, [](char c) { return c == 0; });
}

// Looks at the header without an operation, since each refreshes what a later one may rely on.
template <typename Header>
void check(slot<Header> &x, std::string_view line) {
    using type = family<Header>;
    if (x.data() == nullptr) {
        require(x.content.empty() && (x.kind != 0 || (x.header.magic == 0 && x.header.capacity == 0)), line);
        return;
    }
    const uint32_t length = type::length(x.header);
    require(x.header.capacity == x.capacity || x.kind == type::constant, line);
    require(x.damaged != nullptr || length == x.units() || (type::terminator == 1 && length <= x.capacity), line);
    const std::string whole = x.content + std::string(type::terminator, '\0');
    require(memcmp(x.data(), whole.data(), whole.size()) == 0, line);
    require(x.damaged != nullptr || !x.framed() ||
                (memcmp(x.data() - guard_size, &x.kind, guard_size) == 0 &&
                 memcmp(x.data() + x.size(), &x.kind, guard_size) == 0),
            line);
}

template <typename Header>
int clear(slot<Header> &x, std::string_view line) {
    const int result = family<Header>::clear(&x.header);
    require(result != 0 || zeros(x.data(), x.size()), line);
    return result;
}

template <typename Header>
int destroy(slot<Header> &x, std::string_view line) {
    const bool was_valid = x.valid();
    require(family<Header>::destroy(&x.header) == (was_valid ? 0 : -1), line);
    if (!was_valid)
        return 0;
    if (x.kind == family<Header>::guarded)
        require(zeros(x.storage.get(), x.size() + guards_size), line);
    else if (!x.owned())
        require(memcmp(x.storage.get(), x.content.data(), x.content.size()) == 0, line);
    const Header left = x.header;
    x = {};
    x.header = left; // for the check that all of it is zero
    return 0;
}

// Damages a byte of the header or of a guard word, or mends the one that was damaged.
template <typename Header>
int damage_or_mend(slot<Header> &x, uint32_t which) {
    const bool damages = x.damaged == nullptr && x.kind != 0,
               guard = which % 6 > 1 && x.framed() && x.data() != nullptr;
    if (damages) {
        const ptrdiff_t size = static_cast<ptrdiff_t>(x.size()), guards[] = {-4, -1, size, size + 3};
        uint32_t &word = which % 2 == 0 ? x.header.magic : family<Header>::length(x.header);
        x.damaged = guard ? x.data() + guards[which % 6 - 2] : reinterpret_cast<char *>(&word) + 3;
    }
    if (x.damaged != nullptr)
        *x.damaged ^= '\x80';
    if (!damages)
        x.damaged = nullptr;
    return 0;
}

// Makes a header anew: of the kind m, with room for n units or, where it wraps one, the text. The
// library's own storage is made now, or by the first operation.
template <typename Header>
int make(operands<Header> &o) {
    using type = family<Header>;
    slot<Header> &x = o.a;
    if (x.damaged != nullptr)
        damage_or_mend(x, 0);
    destroy(x, o.line);
    x.kind = type::first + o.m % type::kinds;
    x.unitsize = type::unitsize(o);
    x.capacity = x.owned() ? o.n : o.n % 256;
    if (x.owned()) {
        const bool possible = x.unitsize != 0 && x.capacity < type::limit;
        const bool now = x.kind == type::first && o.m != 0;
        type::set_up(x, nullptr);
        if (now || !possible)
            require((now ? type::create(x) : type::valid(&x.header)) == (possible ? 0 : -1), o.line);
        if (!possible)
            x = {};
        return 0;
    }
    type::fill(o);
    const size_t size = x.size() + (x.framed() ? guards_size : 0);
    x.storage = std::make_unique<char[]>(size);
    memset(x.storage.get(), '#', size);
    memcpy(x.storage.get(), x.content.c_str(), x.content.size() + type::terminator);
    type::set_up(x, x.storage.get());
    require(!x.framed() || (x.content.empty() && zeros(x.data(), x.size())), o.line);
    if (x.unitsize == 0) {
        require(type::valid(&x.header) == -1, o.line);
        x = {};
    }
    return 0;
}

// Calls of operations that get a source in o.b: a failure for one that is the destination or invalid.
template <typename Header>
bool compatible(const operands<Header> &o) {
    return &o.a != &o.b && o.a.valid() && o.b.valid() && o.a.unitsize == o.b.unitsize;
}

template <typename Header>
int insert(operands<Header> &o, size_t position) {
    return compatible(o) ? o.a.replace(position, position, o.b.content) : -1;
}

template <typename Header>
int slice(operands<Header> &o, size_t start, size_t end) {
    return compatible(o) && start <= end && end <= o.b.units() ? o.a.assign(o.b.part(start, end)) : -1;
}

template <typename Header>
int compare(const operands<Header> &o) {
    const int order = o.a.content.compare(o.b.content);
    return compatible(o) ? (order > 0) - (order < 0) : -2;
}

template <typename Header>
int make_new(const operands<Header> &o, Header *fresh) {
    using type = family<Header>;
    const int result = type::destroy_new(&fresh), again = type::destroy_new(&fresh), none = type::destroy_new(nullptr);
    require(again == -1 && none == -1, o.line);
    return result;
}

// The operations that both have.
template <typename Header, typename Type = family<Header>>
constexpr auto common_rows = std::to_array<row<Header>>({
    ROW('n', 0, make(o)),
    ROW('x', 0, destroy(o.a, o.line)),
    ROW('!', 0, damage_or_mend(o.a, o.m)),
    ROW('V', o.a.number(0), Type::valid(&o.a.header)),
    ROW('L', o.a.number(o.a.units()), static_cast<int>(Type::measure(&o.a.header))),
    ROW('C', o.a.number(o.a.capacity), static_cast<int>(Type::room(&o.a.header))),
    ROW('R', o.a.reserve(o.n), Type::reserve(&o.a.header, o.n)),
    ROW('E', o.a.reserve(uint64_t{o.n} + o.a.units()), Type::extend(&o.a.header, o.n)),
    ROW('z', o.a.assign(""), clear(o.a, o.line)),
    ROW('a', slice(o, 0, o.b.units()), Type::assign(&o.a.header, &o.b.header)),
    ROW('+', insert(o, o.a.units()), Type::append(&o.a.header, &o.b.header)),
    ROW('i', insert(o, o.m), Type::insert(&o.a.header, o.m, &o.b.header)),
    ROW('s', slice(o, o.m, o.n), Type::slice(&o.a.header, &o.b.header, o.m, o.n)),
    ROW('e', o.a.erase(o.m, o.n), Type::erase(&o.a.header, o.m, o.n)),
    ROW('<', compare(o), Type::compare(&o.a.header, &o.b.header)),
    ROW('N', Type::possible(o), make_new(o, Type::fresh(o))),
});

// "0" stands for 0, and so on in the order of ASCII; "}" for more than any storage holds, "~" for the
// largest number.
inline uint32_t operand(std::string_view line, size_t position) {
    const char c = position < line.size() ? line[position] : '0';
    if (c == '~')
        return UINT32_MAX;
    return c == '}' ? 1U << 25 : static_cast<uint8_t>(c - '0');
}

// Does the operations of an input, and destroys what is left. In a text, "|" stands for a line end.
template <typename Header, size_t Count>
void do_operations(std::string_view input, std::span<const row<Header>> rows) {
    // Long sequences and contents take time and show nothing new.
    constexpr int most_operations = 150;
    constexpr size_t most_units = 256;
    slot<Header> slots[Count];
    bool goes_on = true;
    for (int i = 0; i < most_operations && goes_on && !input.empty(); i++) {
        const std::string_view line = input.substr(0, input.find('\n'));
        input.remove_prefix(std::min(input.size(), line.size() + 1));
        std::string text(line.substr(std::min<size_t>(line.size(), 6)));
        std::replace(text.begin(), text.end(), '|', '\n');
        operands<Header> o = {.a = slots[operand(line, 1) % Count],
                              .b = slots[operand(line, 2) % Count],
                              .c = slots[operand(line, 3) % Count],
                              .m = operand(line, 4),
                              .n = operand(line, 5),
                              .line = std::string(line),
                              .raw = text};
        for (const auto &table : {std::span<const row<Header>>(common_rows<Header>), rows})
            for (const row<Header> &each : table)
                if (line.starts_with(each.letter)) {
                    const int wanted = each.model(o);
                    require(each.call(o) == wanted && o.given == o.expected, line);
                }
        for (slot<Header> &x : slots) {
            check(x, line);
            goes_on = goes_on && x.units() <= most_units;
        }
    }
    for (slot<Header> &x : slots) {
        if (x.damaged != nullptr)
            damage_or_mend(x, 0);
        destroy(x, "the end");
    }
}

} // namespace zelta::test

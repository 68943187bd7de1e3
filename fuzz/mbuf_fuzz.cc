// Unit array operations on three arrays of all kinds, against vectors of units.

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

#include "fuzz/operation.h"
#include "fuzz/target.h"
#include "lib/mbuf.h"

using namespace zelta;
using namespace zelta::fuzz;

namespace {

constexpr uint32_t kinds[] = {MBUF_MAGIC_HEAP,   MBUF_MAGIC_HEAP_FIXED,  MBUF_MAGIC_GUARDED,
                              MBUF_MAGIC_EXTERN, MBUF_MAGIC_EXTERN_DATA, MBUF_MAGIC_EXTERN_LOCKED};

using units = std::vector<std::string>;

struct slot {
    mbuf b = {};
    // Caller's storage, of exactly its size and on the heap, so that AddressSanitizer sees an
    // overrun.
    std::unique_ptr<char[]> storage = {};
    void *damaged = nullptr; // the word that makes the array invalid
    // The model.
    uint32_t kind = 0; // 0: no array
    uint32_t unitsize = 0;
    uint32_t capacity = 0;
    units list = {};
};

using operands = operands_of<slot>;

size_t length_of(const slot &x) {
    return x.list.size();
}

bool guarded(const slot &x) {
    return x.kind - MBUF_MAGIC_HEAP <= MBUF_MAGIC_GUARDED - MBUF_MAGIC_HEAP;
}

size_t data_size(const slot &x) {
    return size_t{x.unitsize} * x.capacity;
}

// The whole units that the text holds.
units units_in(const slot &x, const std::string &text) {
    units list;
    for (size_t at = 0; x.unitsize != 0 && at + x.unitsize <= text.size(); at += x.unitsize)
        list.push_back(text.substr(at, x.unitsize));
    return list;
}

int by_first_byte(const void *a, const void *b) {
    return *static_cast<const uint8_t *>(a) - *static_cast<const uint8_t *>(b);
}

// --- the model ---

bool valid(const slot &x) {
    return x.kind != 0 && x.damaged == nullptr;
}

bool compatible(const operands &o) {
    return &o.a != &o.b && valid(o.a) && valid(o.b) && o.a.unitsize == o.b.unitsize;
}

bool room_for(slot &x, uint64_t need) {
    const uint64_t grown = std::max(need, uint64_t{x.capacity} * 2);
    if (x.kind == MBUF_MAGIC_HEAP && x.capacity < need && grown < MBUF_MAX_CAPACITY)
        x.capacity = static_cast<uint32_t>(grown);
    return x.capacity >= need;
}

// Replaces the units [start, end), of which those behind the last are none.
int replace(slot &x, uint64_t start, uint64_t end, const units &by) {
    const size_t used = x.list.size();
    if (!valid(x) || start > end || start > used)
        return -1;
    const size_t last = static_cast<size_t>(std::min<uint64_t>(end, used));
    if (!room_for(x, used - (last - start) + by.size()))
        return -1;
    units whole(x.list.begin(), x.list.begin() + static_cast<ptrdiff_t>(start));
    whole.insert(whole.end(), by.begin(), by.end());
    whole.insert(whole.end(), x.list.begin() + static_cast<ptrdiff_t>(last), x.list.end());
    x.list = whole;
    return 0;
}

int overwrite(slot &x, uint64_t index, const units &by) {
    return replace(x, index, index + by.size(), by);
}

int erase(slot &x, uint64_t start, uint64_t end) {
    return end > x.list.size() ? -1 : replace(x, start, end, {});
}

int slice(operands &o) {
    if (!compatible(o) || o.m > o.n || o.n > o.b.list.size())
        return -1;
    return replace(o.a, 0, UINT32_MAX, {o.b.list.begin() + o.m, o.b.list.begin() + o.n});
}

// The text, cut or filled with zeros to one unit.
std::string unit_of(const operands &o) {
    std::string unit = o.raw;
    unit.resize(o.a.unitsize);
    return unit;
}

int reserve(slot &x, uint64_t need) {
    return valid(x) && x.kind == MBUF_MAGIC_HEAP && room_for(x, need) ? 0 : -1;
}

int sort(slot &x) {
    if (!valid(x))
        return -1;
    std::stable_sort(x.list.begin(), x.list.end(), [](const std::string &a, const std::string &b) {
        return by_first_byte(a.data(), b.data()) < 0;
    });
    return 0;
}

int reverse(slot &x) {
    if (!valid(x))
        return -1;
    std::reverse(x.list.begin(), x.list.end());
    return 0;
}

int compare(const operands &o) {
    if (!compatible(o))
        return -2;
    const std::string a = std::accumulate(o.a.list.begin(), o.a.list.end(), std::string()),
                      b = std::accumulate(o.b.list.begin(), o.b.list.end(), std::string());
    const int order = a.compare(b);
    return (order > 0) - (order < 0);
}

int find(const operands &o, bool with_comparator) {
    const size_t length = o.raw.size(), size = o.a.unitsize;
    if (!valid(o.a) || o.m >= o.a.list.size() || length > size ||
        (!with_comparator && length < size))
        return -1;
    for (size_t i = o.m; i < o.a.list.size(); i++)
        if (with_comparator ? o.a.list[i][0] == o.raw[0] : o.a.list[i] == o.raw)
            return static_cast<int>(i);
    return -1;
}

int set(operands &o) {
    if (!valid(o.a) || o.m >= o.a.list.size() || o.raw.size() != o.a.unitsize)
        return -1;
    o.a.list[o.m] = o.raw;
    return 0;
}

int updatesize(operands &o) {
    const bool resizable = o.a.kind == MBUF_MAGIC_EXTERN || o.a.kind == MBUF_MAGIC_EXTERN_DATA;
    if (!valid(o.a) || !resizable || o.m > o.a.capacity)
        return -1;
    // Any bytes may lie behind the units in use.
    o.a.list = units_in(o.a, {o.a.storage.get(), o.m * size_t{o.a.unitsize}});
    return 0;
}

int clear(slot &x) {
    if (!valid(x))
        return -1;
    x.list.clear();
    return 0;
}

// --- the calls that are more than their operands ---

// A copy of exactly the text's size, but for a byte that a comparator may read.
std::unique_ptr<char[]> memory(const std::string &text) {
    auto copy = std::make_unique<char[]>(std::max<size_t>(text.size(), 1));
    text.copy(copy.get(), text.size());
    return copy;
}

template <typename Call>
int with_units(operands &o, Call call) {
    const auto copy = memory(o.raw);
    return call(mk_mref(copy.get(), static_cast<uint32_t>(units_in(o.a, o.raw).size())));
}

template <typename Call>
int with_bytes(operands &o, Call call) {
    const auto copy = memory(o.raw);
    return call(mk_mref(copy.get(), static_cast<uint32_t>(o.raw.size())));
}

int call_push_back(operands &o) {
    const auto copy = memory(unit_of(o));
    return mbuf_push_back(&o.a.b, mk_mref(copy.get(), 0));
}

int call_new(operands &o) {
    mbuf *fresh = mbuf_new(o.m % 8, o.n);
    return mbuf_delete(&fresh);
}

// Two headers of one storage.
int call_with_twin(operands &o) {
    mbuf twin = o.a.b;
    if (twin.bufptr == nullptr)
        return -1;
    return std::max(mbuf_append(&o.a.b, &twin), mbuf_compare(&o.a.b, &twin) + 1);
}

int call_clear(slot &x) {
    const int result = mbuf_clear(&x.b);
    const char *data = static_cast<const char *>(x.b.bufptr);
    require(result != 0 || std::all_of(data, data + data_size(x), [](char c) { return c == 0; }),
            "units are left");
    return result;
}

// From unit to unit: how many there are; -1 for an invalid array, -2 for a pointer that is wrong.
int call_walk(slot &x) {
    char *at = static_cast<char *>(mbuf_begin(&x.b));
    void *const end = mbuf_end(&x.b);
    if (at == nullptr)
        return end == nullptr ? -1 : -2;
    int i = 0;
    while (at != end && mbuf_access(&x.b, static_cast<uint32_t>(i)) == at &&
           mbuf_index(&x.b, at) == i && (x.unitsize == 1 || mbuf_next(&x.b, at + 1) == nullptr)) {
        at = static_cast<char *>(mbuf_next(&x.b, at));
        i++;
    }
    const bool right = mbuf_index(&x.b, end) == i && mbuf_index(&x.b, &x) == -1;
    return at == end && right && mbuf_access(&x.b, static_cast<uint32_t>(i)) == nullptr ? i : -2;
}

struct row {
    char letter;
    int (*model)(operands &o);
    int (*call)(operands &o);
};

#define ROW(letter, model, call)                                                                   \
    {                                                                                              \
        letter, []([[maybe_unused]] operands &o) -> int { return model; },                         \
            []([[maybe_unused]] operands &o) -> int { return call; }                               \
    }

constexpr row rows[] = {
    ROW('a', compatible(o) ? replace(o.a, 0, UINT32_MAX, o.b.list) : -1,
        mbuf_assign(&o.a.b, &o.b.b)),
    ROW('+', compatible(o) ? overwrite(o.a, o.a.list.size(), o.b.list) : -1,
        mbuf_append(&o.a.b, &o.b.b)),
    ROW('i', compatible(o) ? replace(o.a, o.m, o.m, o.b.list) : -1,
        mbuf_insert(&o.a.b, o.m, &o.b.b)),
    ROW('w', compatible(o) ? overwrite(o.a, o.m, o.b.list) : -1, mbuf_write(&o.a.b, o.m, &o.b.b)),
    ROW('s', slice(o), mbuf_slice(&o.a.b, &o.b.b, o.m, o.n)),
    ROW('m', overwrite(o.a, o.m, units_in(o.a, o.raw)),
        with_units(o, [&](mref given) { return mbuf_memcpy(&o.a.b, o.m, given); })),
    ROW('c', overwrite(o.a, o.a.list.size(), units_in(o.a, o.raw)),
        with_units(o, [&](mref given) { return mbuf_concat(&o.a.b, given); })),
    ROW('p', overwrite(o.a, o.a.list.size(), {unit_of(o)}), call_push_back(o)),
    ROW('H', -1, mbuf_concat(&o.a.b, mk_mref(o.a.b.bufptr, UINT32_MAX))),
    ROW('0', -1, mbuf_memcpy(&o.a.b, o.m, mk_mref(nullptr, o.n))),
    ROW('2', -1, call_with_twin(o)),
    ROW('R', reserve(o.a, o.n), mbuf_reserve(&o.a.b, o.n)),
    ROW('E', reserve(o.a, uint64_t{o.n} + o.a.list.size()), mbuf_extend(&o.a.b, o.n)),
    ROW('e', erase(o.a, o.m, o.n), mbuf_erase(&o.a.b, o.m, o.n)),
    ROW('r', reverse(o.a), mbuf_reverse(&o.a.b)),
    ROW('o', sort(o.a), mbuf_sort(&o.a.b, by_first_byte)),
    ROW('<', compare(o), mbuf_compare(&o.a.b, &o.b.b)),
    ROW('f', find(o, false),
        with_bytes(o, [&](mref key) { return mbuf_find(&o.a.b, o.m, key, nullptr); })),
    ROW('F', find(o, true),
        with_bytes(o, [&](mref key) { return mbuf_find(&o.a.b, o.m, key, by_first_byte); })),
    ROW('=', set(o), with_bytes(o, [&](mref unit) { return mbuf_set(&o.a.b, o.m, unit); })),
    ROW('u', updatesize(o), mbuf_updatesize(&o.a.b, o.m)),
    ROW('z', clear(o.a), call_clear(o.a)),
    ROW('W', valid(o.a) ? static_cast<int>(o.a.list.size()) : -1, call_walk(o.a)),
    ROW('L', valid(o.a) ? static_cast<int>(o.a.list.size()) : -1,
        static_cast<int>(mbuf_size(&o.a.b))),
    ROW('C', valid(o.a) ? static_cast<int>(o.a.capacity) : -1,
        static_cast<int>(mbuf_capacity(&o.a.b))),
    ROW('N', o.m % 8 != 0 && o.n < MBUF_MAX_CAPACITY ? 0 : -1, call_new(o)),
};

void check(const slot &x, std::string_view line) {
    if (x.b.bufptr == nullptr) {
        require(x.list.empty() && (x.kind != 0 || x.b.magic == 0), line);
        return;
    }
    require(x.b.capacity == x.capacity && x.b.unitsize == x.unitsize, line);
    require(x.b.used == x.list.size() || x.damaged == &x.b.used, line);
    const char *unit = static_cast<const char *>(x.b.bufptr);
    for (const std::string &each : x.list) {
        require(memcmp(unit, each.data(), x.unitsize) == 0, line);
        unit += x.unitsize;
    }
    if (guarded(x) && x.damaged == nullptr)
        require(guard_intact(x.b.bufptr, data_size(x), x.kind), line);
}

// --- life, and what is no row ---

void destroy(slot &x, std::string_view line) {
    const bool was_valid = valid(x);
    require(mbuf_destroy(&x.b) == (was_valid ? 0 : -1), line);
    if (!was_valid)
        return;
    const char *data = x.storage.get();
    if (x.kind == MBUF_MAGIC_GUARDED)
        require(std::all_of(data, data + data_size(x) + guards_size, [](char c) { return c == 0; }),
                line);
    else if (data != nullptr)
        require(units_in(x, {data, x.list.size() * x.unitsize}) == x.list, line);
    x = {};
}

// Damages a word of the array, or mends the one that was damaged.
void damage_or_mend(slot &x, uint32_t which) {
    if (x.kind == 0)
        return;
    if (x.damaged != nullptr) {
        flip_word(x.damaged);
        x.damaged = nullptr;
        return;
    }
    void *words[] = {&x.b.magic, &x.b.used, &x.b.magic, &x.b.used};
    if (guarded(x) && x.b.bufptr != nullptr) {
        words[2] = static_cast<char *>(x.b.bufptr) - guard_size;
        words[3] = static_cast<char *>(x.b.bufptr) + data_size(x);
    }
    x.damaged = words[which % std::size(words)];
    flip_word(x.damaged);
}

// The storage is made now, or by the first operation.
void make_heap(slot &x, bool now, std::string_view line) {
    const bool possible = x.unitsize != 0 && x.capacity < MBUF_MAX_CAPACITY;
    x.b = {.magic = x.kind, .unitsize = x.unitsize, .capacity = x.capacity, .bufptr = nullptr};
    if (now || !possible)
        require((now ? mbuf_create(&x.b, x.unitsize, x.capacity) : mbuf_valid(&x.b)) ==
                    (possible ? 0 : -1),
                line);
    if (!possible)
        x = {};
}

void make_in_storage(slot &x, const std::string &text, std::string_view line) {
    const size_t size = data_size(x);
    x.storage = std::make_unique<char[]>(size + (x.kind == MBUF_MAGIC_GUARDED ? guards_size : 0));
    x.b = {
        .magic = x.kind, .unitsize = x.unitsize, .capacity = x.capacity, .bufptr = x.storage.get()};
    if (x.kind == MBUF_MAGIC_GUARDED) {
        x.b.bufptr = _mbuf_init_buffer(x.storage.get(), size, x.kind);
    } else {
        text.copy(x.storage.get(), size);
        x.list = units_in(x, text.substr(0, size));
        x.b.used = static_cast<uint32_t>(x.list.size());
    }
    require(mbuf_valid(&x.b) == (x.unitsize != 0 ? 0 : -1), line);
    if (x.unitsize == 0)
        x = {};
}

// Makes an array anew: of the kind m, for n units of the given size, with the text's units in
// caller's memory.
void make(operands &o, uint32_t unitsize, std::string_view line) {
    slot &x = o.a;
    if (x.damaged != nullptr)
        damage_or_mend(x, 0);
    destroy(x, line);
    x.kind = kinds[o.m % std::size(kinds)];
    x.unitsize = unitsize;
    x.capacity = o.n;
    if (x.kind == MBUF_MAGIC_HEAP || x.kind == MBUF_MAGIC_HEAP_FIXED)
        return make_heap(x, o.m == std::size(kinds), line);
    x.capacity %= 256;
    make_in_storage(x, o.raw, line);
}

// Copies the last unit, or that at the index m, to memory of n bytes.
void get(operands &o, bool last, std::string_view line) {
    units &list = o.a.list;
    const size_t index = last ? list.size() - 1 : o.m, length = o.n % 256;
    const bool gets = valid(o.a) && index < list.size() && length >= o.a.unitsize;
    const auto copy = memory(std::string(length, '\0'));
    const mref to = mk_mref(copy.get(), static_cast<uint32_t>(length));
    const int result = last ? mbuf_pop_back(&o.a.b, to) : mbuf_get(&o.a.b, o.m, to);
    require(result == (gets ? 0 : -1), line);
    require(!gets || memcmp(copy.get(), list[index].data(), o.a.unitsize) == 0, line);
    if (gets && last)
        list.pop_back();
}

// Copies the units from n on, which lie in the array itself, to the index m.
void copy_own_units(operands &o, std::string_view line) {
    if (o.a.b.bufptr == nullptr || o.n > o.a.list.size())
        return;
    char *from = static_cast<char *>(o.a.b.bufptr) + size_t{o.n} * o.a.unitsize;
    const units own(o.a.list.begin() + o.n, o.a.list.end());
    const mref count = mk_mref(from, static_cast<uint32_t>(own.size()));
    require(overwrite(o.a, o.m, own) == mbuf_memcpy(&o.a.b, o.m, count), line);
}

void step(operands &o, const operation &operation) {
    switch (operation.letter) {
    case 'n': { // the sizes that are known to sorting and reversing, others, and one that is large
        const uint32_t size = operation.c <= 20 ? operation.c : operation.c > UINT8_MAX ? 600 : 64;
        return make(o, size, operation.line);
    }
    case 'x':
        return destroy(o.a, operation.line);
    case '!':
        return damage_or_mend(o.a, o.m);
    case 'g':
        return get(o, false, operation.line);
    case 'P':
        return get(o, true, operation.line);
    case 'M':
        return copy_own_units(o, operation.line);
    default:
        for (const row &each : rows)
            if (each.letter == operation.letter)
                require(each.model(o) == each.call(o), operation.line);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    do_operations<slot, 3>(as_text(data, size));
    return 0;
}

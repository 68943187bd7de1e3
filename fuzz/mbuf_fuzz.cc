// The model of unit arrays.

#include "tests/model.h"

#include <numeric>
#include <vector>

#include "lib/mbuf.h"

using namespace zelta;
using namespace zelta::test;

using arrays = operands<mbuf>;

template <>
struct zelta::test::family<mbuf> {
    static constexpr uint32_t first = MBUF_MAGIC_HEAP, guarded = MBUF_MAGIC_GUARDED, constant = 0, kinds = 6,
                              limit = MBUF_MAX_CAPACITY, terminator = 0;
    static constexpr auto valid = mbuf_valid, destroy = mbuf_destroy, clear = mbuf_clear;
    static constexpr auto reserve = mbuf_reserve, extend = mbuf_extend;
    static constexpr auto assign = mbuf_assign, append = mbuf_append, compare = mbuf_compare;
    static constexpr auto insert = mbuf_insert;
    static constexpr auto slice = mbuf_slice;
    static constexpr auto erase = mbuf_erase;
    static constexpr auto destroy_new = mbuf_delete;
    static constexpr auto measure = mbuf_size, room = mbuf_capacity;
    static int create(slot<mbuf> &x) { return mbuf_create(&x.header, x.unitsize, x.capacity); }
    static int possible(const arrays &o) { return o.m % 8 != 0 && o.n < limit ? 0 : -1; }
    static mbuf *fresh(const arrays &o) { return mbuf_new(o.m % 8, o.n); }
    static char *data(const mbuf &b) { return static_cast<char *>(b.bufptr); }
    static uint32_t &length(mbuf &b) { return b.used; }
    // The sizes that are known to sorting and reversing, others, and one that is large.
    static uint32_t unitsize(const arrays &o) {
        const uint32_t size = operand(o.line, 3);
        if (size <= 20)
            return size;
        return size > UINT8_MAX ? 600 : 64;
    }
    static void fill(arrays &o) {
        if (!o.a.framed() && o.a.unitsize != 0)
            o.a.content = o.raw.substr(0, std::min<size_t>(o.a.capacity, o.raw.size() / o.a.unitsize) * o.a.unitsize);
    }
    static void set_up(slot<mbuf> &x, char *storage) {
        x.header = {x.kind, x.unitsize, static_cast<uint32_t>(x.units()), x.capacity, storage};
        if (x.kind == guarded)
            x.header.bufptr = _mbuf_init_buffer(storage, x.size(), x.kind);
    }
};

namespace {

int overwrite(slot<mbuf> &x, uint64_t index, const std::string &by) {
    return x.replace(index, index + by.size() / x.unitsize, by);
}

// The whole units that the text holds, or the text as one unit.
std::string units_in(const arrays &o) { return o.raw.substr(0, o.raw.size() / o.a.unitsize * o.a.unitsize); }

std::string unit_of(const arrays &o) {
    std::string unit = o.raw;
    unit.resize(o.a.unitsize);
    return unit;
}

const void *key_given; // to a comparator, as what it gets first

int by_first_byte(const void *a, const void *b) {
    require(key_given == nullptr || key_given == a, "the key is not what is compared with a unit");
    return *static_cast<const uint8_t *>(a) - *static_cast<const uint8_t *>(b);
}

int sort(slot<mbuf> &x) {
    std::vector<std::string> units;
    for (size_t i = 0; i < x.units(); i++)
        units.push_back(x.part(i, i + 1));
    std::stable_sort(units.begin(), units.end(),
                     [](const std::string &a, const std::string &b) { return uint8_t(a[0]) < uint8_t(b[0]); });
    return x.valid() ? x.assign(std::accumulate(units.begin(), units.end(), std::string())) : -1;
}

int reverse(slot<mbuf> &x) {
    std::string reversed;
    for (size_t i = x.units(); i > 0; i--)
        reversed += x.part(i - 1, i);
    return x.valid() ? x.assign(reversed) : -1;
}

int find(const arrays &o, bool by_comparator) {
    const size_t length = o.raw.size(), size = o.a.unitsize;
    if (!o.a.valid() || length > size || (!by_comparator && length < size))
        return -1;
    for (size_t i = o.m; i < o.a.units(); i++)
        if (by_comparator ? o.a.part(i, i + 1)[0] == o.raw[0] : o.a.part(i, i + 1) == o.raw)
            return static_cast<int>(i);
    return -1;
}

int set(arrays &o) {
    const bool sets = o.m < o.a.units() && o.raw.size() == o.a.unitsize;
    return sets ? o.a.replace(o.m, o.m + 1, o.raw) : -1;
}

// Copies the unit at the index to memory of n bytes.
int get(arrays &o, uint64_t index) {
    if (!o.a.valid() || index >= o.a.units() || o.n % 256 < o.a.unitsize)
        return -1;
    o.expected = o.a.part(static_cast<size_t>(index), static_cast<size_t>(index) + 1);
    return 0;
}

int pop(arrays &o) { return get(o, o.a.units() - uint64_t{1}) == 0 ? o.a.erase(o.a.units() - 1, o.a.units()) : -1; }

// The units from n on, which lie in the array itself, to the index m.
int copy_own_units(arrays &o) {
    const bool there = o.a.data() != nullptr && o.n <= o.a.units();
    return there ? overwrite(o.a, o.m, o.a.part(o.n, o.a.units())) : -1;
}

int updatesize(arrays &o) {
    const bool resizable = o.a.kind == MBUF_MAGIC_EXTERN || o.a.kind == MBUF_MAGIC_EXTERN_DATA;
    if (!o.a.valid() || !resizable || o.m > o.a.capacity)
        return -1;
    o.a.content.assign(o.a.data(), o.m * size_t{o.a.unitsize}); // any bytes may lie behind the units in use
    return 0;
}

// A copy of the text, of exactly its size but for a byte that a comparator may read.
template <typename Call>
int with_memory(const std::string &text, Call call) {
    const auto copy = std::make_unique<char[]>(std::max<size_t>(text.size(), 1));
    text.copy(copy.get(), text.size());
    return call(copy.get());
}

template <typename Call>
int with_units(arrays &o, Call call) {
    return with_memory(o.raw, [&](char *copy) {
        return call(&o.a.header, {copy, static_cast<uint32_t>(o.raw.size() / std::max(1U, o.a.unitsize))});
    });
}

mref raw_at(const arrays &o, char *copy) { return {copy, static_cast<uint32_t>(o.raw.size())}; }

int call_find(arrays &o, mbuf_cmp_fn comparator) {
    return with_memory(o.raw, [&](char *copy) {
        key_given = copy;
        const int at = mbuf_find(&o.a.header, o.m, raw_at(o, copy), comparator);
        key_given = nullptr;
        return at;
    });
}

int call_get(arrays &o, bool last) {
    return with_memory(std::string(o.n % 256, '\0'), [&](char *copy) {
        const mref to = mk_mref(copy, o.n % 256);
        const int result = last ? mbuf_pop_back(&o.a.header, to) : mbuf_get(&o.a.header, o.m, to);
        o.given.assign(copy, result == 0 ? o.a.unitsize : 0);
        return result;
    });
}

int call_with_own_units(arrays &o) {
    if (o.a.data() == nullptr || o.n > o.a.units())
        return -1;
    return mbuf_memcpy(&o.a.header, o.m,
                       {o.a.data() + size_t{o.n} * o.a.unitsize, static_cast<uint32_t>(o.a.header.used - o.n)});
}

// No memory, more units than there can be, two headers of one storage, no comparator.
int call_with_refused_arguments(arrays &o) {
    mbuf *b = &o.a.header;
    mbuf twin = *b;
    const mref none = {nullptr, 600};
    return std::max({mbuf_memcpy(b, o.m, none), mbuf_push_back(b, none), mbuf_find(b, 0, none, nullptr),
                     mbuf_get(b, 0, none), mbuf_set(b, 0, {nullptr, o.a.unitsize}), mbuf_pop_back(b, none),
                     mbuf_concat(b, {b->bufptr, UINT32_MAX}), mbuf_sort(b, nullptr),
                     twin.bufptr == nullptr ? -1 : mbuf_append(b, &twin), mbuf_compare(b, b) + 1,
                     twin.bufptr == nullptr ? -1 : mbuf_compare(b, &twin) + 1});
}

// From unit to unit: how many there are; -1 for an invalid array, -2 for a pointer that is wrong.
int call_walk(slot<mbuf> &x) {
    mbuf *b = &x.header;
    char *at = static_cast<char *>(mbuf_begin(b));
    void *const end = mbuf_end(b);
    if (at == nullptr)
        return end == nullptr && mbuf_access(b, 0) == nullptr && mbuf_next(b, b) == nullptr ? -1 : -2;
    int i = 0;
    for (; at != end && mbuf_access(b, static_cast<uint32_t>(i)) == at && mbuf_index(b, at) == i &&
           (x.unitsize == 1 || mbuf_next(b, at + 1) == nullptr);
         i++)
        at = static_cast<char *>(mbuf_next(b, at));
    const bool right = mbuf_index(b, end) == i && mbuf_index(b, b) == -1;
    return at == end && right && mbuf_access(b, static_cast<uint32_t>(i)) == nullptr ? i : -2;
}

// clang-format off
constexpr row<mbuf> rows[] = {
    ROW('w', compatible(o) ? overwrite(o.a, o.m, o.b.content) : -1, mbuf_write(&o.a.header, o.m, &o.b.header)),
    ROW('m', overwrite(o.a, o.m, units_in(o)),
        with_units(o, [&](mbuf *b, mref given) { return mbuf_memcpy(b, o.m, given); })),
    ROW('c', overwrite(o.a, o.a.units(), units_in(o)), with_units(o, mbuf_concat)),
    ROW('p', overwrite(o.a, o.a.units(), unit_of(o)),
        with_memory(unit_of(o), [&](char *copy) { return mbuf_push_back(&o.a.header, {copy, 0}); })),
    ROW('M', copy_own_units(o), call_with_own_units(o)),
    ROW('0', -1, call_with_refused_arguments(o)),
    ROW('r', reverse(o.a), mbuf_reverse(&o.a.header)),
    ROW('o', sort(o.a), mbuf_sort(&o.a.header, by_first_byte)),
    ROW('f', find(o, false), call_find(o, nullptr)),
    ROW('F', find(o, true), call_find(o, by_first_byte)),
    ROW('=', set(o),
        with_memory(o.raw, [&](char *copy) { return mbuf_set(&o.a.header, o.m, raw_at(o, copy)); })),
    ROW('g', get(o, o.m), call_get(o, false)),
    ROW('P', pop(o), call_get(o, true)),
    ROW('u', updatesize(o), mbuf_updatesize(&o.a.header, o.m)),
    ROW('W', o.a.number(o.a.units()), call_walk(o.a)),
};
// clang-format on

} // namespace

void zelta::fuzz::take(std::string_view input) { do_operations<mbuf, 3>(input, rows); }

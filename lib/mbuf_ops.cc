#include "lib/mbuf.h"

#include <cstring>
#include <utility>

namespace zelta {

namespace {

// Sorting and reversing at a size known to the compiler turn each unit move into a few
// instructions; size 0 stands for every other size, known only at run time.
template <size_t Size>
void move_unit(char *to, const char *from, size_t size) {
    memcpy(to, from, Size == 0 ? size : Size);
}

// One unit, which may overlap its place.
void copy_unit(char *to, const void *from, size_t size) {
    if (size == 4)
        memmove(to, from, 4);
    else if (size == 8)
        memmove(to, from, 8);
    else if (size == 16)
        memmove(to, from, 16);
    else
        memmove(to, from, size);
}

char *unit_at(const mbuf *b, uint32_t index) {
    return static_cast<char *>(b->bufptr) + static_cast<size_t>(b->unitsize) * index;
}

// The common check of an operation on two arrays.
bool compatible(mbuf *a, mbuf *b) {
    return mbuf_valid(a) == 0 && mbuf_valid(b) == 0 && a != b && a->unitsize == b->unitsize &&
           a->bufptr != b->bufptr;
}

bool room_for(mbuf *b, uint64_t need) {
    if (need > UINT32_MAX)
        return false;
    _mbuf_expand(b, static_cast<uint32_t>(need));
    return b->capacity >= need;
}

// The one edit: replaces the units [start, end) by count units. They may lie in b itself, unless
// units behind end have to move.
int splice(mbuf *b, uint32_t start, uint32_t end, const void *units, uint32_t count) {
    uint64_t need = uint64_t{b->used} - (end - start) + count;
    uintptr_t offset = reinterpret_cast<uintptr_t>(units) - reinterpret_cast<uintptr_t>(b->bufptr);
    bool inside = offset < size_t{b->unitsize} * b->capacity;
    if (!room_for(b, need))
        return -1;
    if (inside) // growing may have moved them
        units = static_cast<char *>(b->bufptr) + offset;
    if (b->used > end)
        memmove(unit_at(b, start) + size_t{b->unitsize} * count, unit_at(b, end),
                size_t{b->unitsize} * (b->used - end));
    if (count > 0)
        memmove(unit_at(b, start), units, size_t{b->unitsize} * count);
    b->used = static_cast<uint32_t>(need);
    return 0;
}

// Overwrites from the index on, and extends when the units run past the end.
int overwrite(mbuf *b, uint32_t index, const void *units, uint32_t count) {
    uint32_t behind = b->used - index;
    return splice(b, index, index + (count < behind ? count : behind), units, count);
}

} // namespace

int mbuf_assign(mbuf *to, mbuf *from) {
    if (!compatible(to, from))
        return -1;
    return splice(to, 0, to->used, from->bufptr, from->used);
}

int mbuf_append(mbuf *to, mbuf *from) {
    if (!compatible(to, from))
        return -1;
    return splice(to, to->used, to->used, from->bufptr, from->used);
}

int mbuf_insert(mbuf *to, uint32_t index, mbuf *from) {
    if (!compatible(to, from) || index > to->used)
        return -1;
    return splice(to, index, index, from->bufptr, from->used);
}

int mbuf_write(mbuf *to, uint32_t index, mbuf *from) {
    if (!compatible(to, from) || index > to->used)
        return -1;
    return overwrite(to, index, from->bufptr, from->used);
}

int mbuf_slice(mbuf *to, mbuf *from, uint32_t start, uint32_t end) {
    if (!compatible(to, from) || start > end || end > from->used)
        return -1;
    return splice(to, 0, to->used, unit_at(from, start), end - start);
}

int mbuf_memcpy(mbuf *b, uint32_t index, mref units) {
    if (mbuf_valid(b) != 0 || index > b->used || units.ptr == nullptr)
        return -1;
    return overwrite(b, index, units.ptr, units.len);
}

int mbuf_concat(mbuf *b, mref units) {
    return mbuf_memcpy(b, mbuf_size(b), units);
}

int mbuf_push_back(mbuf *b, mref unit) {
    if (mbuf_valid(b) != 0 || unit.ptr == nullptr)
        return -1;
    if (b->used == b->capacity)
        return splice(b, b->used, b->used, unit.ptr, 1);
    copy_unit(unit_at(b, b->used++), unit.ptr, b->unitsize);
    return 0;
}

int mbuf_reserve(mbuf *b, uint32_t capacity) {
    if (mbuf_valid(b) != 0 || b->magic != MBUF_MAGIC_HEAP)
        return -1;
    return room_for(b, capacity) ? 0 : -1;
}

int mbuf_extend(mbuf *b, uint32_t extra) {
    if (mbuf_valid(b) != 0 || b->magic != MBUF_MAGIC_HEAP)
        return -1;
    return room_for(b, uint64_t{b->used} + extra) ? 0 : -1;
}

int mbuf_erase(mbuf *b, uint32_t start, uint32_t end) {
    if (mbuf_valid(b) != 0 || start > end || end > b->used)
        return -1;
    return splice(b, start, end, nullptr, 0);
}

namespace {

// Swaps through a piece of stack that a unit of any size passes in parts.
template <size_t Size>
void reverse_units(mbuf *b) {
    char scratch[Size == 0 ? 256 : Size];
    const size_t size = Size == 0 ? b->unitsize : Size;
    char *front = unit_at(b, 0), *back = unit_at(b, b->used - 1);
    for (; front < back; front += size, back -= size) {
        for (size_t done = 0; done < size; done += sizeof scratch) {
            size_t left = size - done;
            size_t part = left < sizeof scratch ? left : sizeof scratch;
            move_unit<Size>(scratch, front + done, part);
            move_unit<Size>(front + done, back + done, part);
            move_unit<Size>(back + done, scratch, part);
        }
    }
}

// Where the run that starts here ends.
const char *run_end(const char *at, size_t width, const char *stop) {
    const size_t left = static_cast<size_t>(stop - at);
    return at + (width < left ? width : left);
}

template <size_t Size>
char *copy_units(char *to, const char *from, const char *end, size_t step) {
    for (; from != end; from += step, to += step)
        move_unit<Size>(to, from, step);
    return to;
}

// Merges the runs [left, right) and [right, end) into the target; ties take the left run. The order
// is that of their first units.
template <size_t Size>
void merge_runs(char *to, const char *left, const char *right, const char *end, size_t step,
                int order, mbuf_cmp_fn compare) {
    const char *middle = right;
    while (true) {
        const size_t take_right = order > 0;
        if (Size != 0 && Size <= 16) {
            // Choosing the head by arithmetic spares a branch that no processor can foresee.
            move_unit<Size>(to, take_right != 0 ? right : left, step);
            right += step * take_right;
            left += step * (1 - take_right);
        } else if (take_right != 0) {
            // Larger units are better fetched on a guess, before the comparison is known.
            move_unit<Size>(to, right, step);
            right += step;
        } else {
            move_unit<Size>(to, left, step);
            left += step;
        }
        to += step;
        if (left == middle || right == end)
            break;
        order = compare(left, right);
    }
    to = copy_units<Size>(to, left, middle, step);
    copy_units<Size>(to, right, end, step);
}

// Merges pairs of runs into the target and returns true; or returns false and leaves the units
// where they are, because all of them are in order.
template <size_t Size>
bool _mbuf_mergeLoop(const char *from, char *to, size_t size, size_t width, size_t step,
                     mbuf_cmp_fn compare) {
    const char *left = from, *const stop = from + size;
    bool moved = false;
    while (left != stop) {
        const char *middle = run_end(left, width, stop), *end = run_end(middle, width, stop);
        int order = 0;
        while (left != middle && middle != end) {
            order = compare(left, middle);
            if (moved || order > 0)
                break;
            left += step;
        }
        if (!moved && order > 0)
            memcpy(to, from, static_cast<size_t>(left - from));
        moved = moved || order > 0;
        if (moved && middle == end)
            copy_units<Size>(to + (left - from), left, end, step);
        else if (moved)
            merge_runs<Size>(to + (left - from), left, middle, end, step, order, compare);
        left = end;
    }
    return moved;
}

template <size_t Size>
void merge_sort(mbuf *b, mbuf *scratch, mbuf_cmp_fn compare) {
    const size_t step = Size == 0 ? b->unitsize : Size, size = step * b->used;
    char *from = unit_at(b, 0), *to = unit_at(scratch, 0);
    for (uint64_t width = step; width < size; width *= 2)
        if (_mbuf_mergeLoop<Size>(from, to, size, static_cast<size_t>(width), step, compare))
            std::swap(from, to);
    if (from != b->bufptr)
        memcpy(b->bufptr, from, size);
}

// What differs with the unit size.
struct unit_operations {
    uint32_t unitsize;
    void (*reverse)(mbuf *b);
    void (*sort)(mbuf *b, mbuf *scratch, mbuf_cmp_fn compare);
};

template <size_t Size>
constexpr unit_operations operations_for = {
    .unitsize = Size, .reverse = reverse_units<Size>, .sort = merge_sort<Size>};

// The sizes worth knowing: integers, pointers, and small records.
constexpr unit_operations known_sizes[] = {operations_for<4>, operations_for<8>, operations_for<16>,
                                           operations_for<64>};

const unit_operations &operations_of(const mbuf *b) {
    for (const unit_operations &known : known_sizes)
        if (known.unitsize == b->unitsize)
            return known;
    return operations_for<0>;
}

} // namespace

int mbuf_reverse(mbuf *b) {
    if (mbuf_valid(b) != 0)
        return -1;
    if (b->used > 1)
        operations_of(b).reverse(b);
    return 0;
}

int mbuf_sort(mbuf *b, mbuf_cmp_fn compare) {
    mbuf scratch;
    if (mbuf_valid(b) != 0 || compare == nullptr ||
        mbuf_create(&scratch, b->unitsize, b->used) != 0)
        return -1;
    operations_of(b).sort(b, &scratch, compare);
    return mbuf_destroy(&scratch);
}

int mbuf_compare(mbuf *a, mbuf *b) {
    if (!compatible(a, b))
        return -2;
    uint32_t common = a->used < b->used ? a->used : b->used;
    int order = memcmp(a->bufptr, b->bufptr, size_t{a->unitsize} * common);
    if (order == 0)
        order = (a->used > b->used) - (a->used < b->used);
    return (order > 0) - (order < 0); // never the -2 of a failure
}

int mbuf_find(mbuf *b, uint32_t start, mref key, mbuf_cmp_fn compare) {
    if (mbuf_valid(b) != 0 || start >= b->used || key.ptr == nullptr || key.len > b->unitsize)
        return -1;
    if (compare == nullptr && key.len < b->unitsize)
        return -1;
    for (uint32_t i = start; i < b->used; i++) {
        const char *unit = unit_at(b, i);
        if ((compare != nullptr ? compare(key.ptr, unit) : memcmp(key.ptr, unit, b->unitsize)) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

int mbuf_get(mbuf *b, uint32_t index, mref to) {
    if (mbuf_valid(b) != 0 || index >= b->used || to.ptr == nullptr || to.len < b->unitsize)
        return -1;
    memmove(to.ptr, unit_at(b, index), b->unitsize);
    return 0;
}

int mbuf_set(mbuf *b, uint32_t index, mref from) {
    if (mbuf_valid(b) != 0 || index >= b->used || from.ptr == nullptr || from.len != b->unitsize)
        return -1;
    memmove(unit_at(b, index), from.ptr, b->unitsize);
    return 0;
}

int mbuf_pop_back(mbuf *b, mref to) {
    if (mbuf_valid(b) != 0 || b->used == 0 || mbuf_get(b, b->used - 1, to) != 0)
        return -1;
    b->used--;
    return 0;
}

void *mbuf_access(mbuf *b, uint32_t index) {
    return mbuf_valid(b) == 0 && index < b->used ? unit_at(b, index) : nullptr;
}

void *mbuf_begin(mbuf *b) {
    return mbuf_valid(b) == 0 ? b->bufptr : nullptr;
}

void *mbuf_end(mbuf *b) {
    return mbuf_valid(b) == 0 ? unit_at(b, b->used) : nullptr;
}

namespace {

// The distance of a unit's pointer, or of the end, from the first unit; false for any other
// pointer.
bool offset_of(mbuf *b, const void *unit, size_t *offset) {
    if (mbuf_valid(b) != 0)
        return false;
    *offset = reinterpret_cast<uintptr_t>(unit) - reinterpret_cast<uintptr_t>(b->bufptr);
    return *offset <= size_t{b->unitsize} * b->used && *offset % b->unitsize == 0;
}

} // namespace

void *mbuf_next(mbuf *b, const void *unit) {
    size_t offset;
    return offset_of(b, unit, &offset) ? unit_at(b, 0) + offset + b->unitsize : nullptr;
}

int mbuf_index(mbuf *b, const void *unit) {
    size_t offset;
    return offset_of(b, unit, &offset) ? static_cast<int>(offset / b->unitsize) : -1;
}

} // namespace zelta

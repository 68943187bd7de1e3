#include "lib/mbuf.h"

#include <cstring>

namespace zelta {

namespace {

// Sorting and reversing at a size known to the compiler turn each unit move into a few
// instructions; size 0 stands for every other size, known only at run time.
template <size_t Size>
void move_unit(char *to, const char *from, size_t size) {
    memcpy(to, from, Size == 0 ? size : Size);
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
    return mbuf_concat(b, mk_mref(unit.ptr, 1));
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
    char *front = unit_at(b, 0), *back = unit_at(b, b->used - 1);
    for (; front < back; front += b->unitsize, back -= b->unitsize) {
        for (size_t done = 0; done < b->unitsize; done += sizeof scratch) {
            size_t left = b->unitsize - done;
            size_t part = left < sizeof scratch ? left : sizeof scratch;
            move_unit<Size>(scratch, front + done, part);
            move_unit<Size>(front + done, back + done, part);
            move_unit<Size>(back + done, scratch, part);
        }
    }
}

// Merges the runs [left, middle) and [middle, end) into the target; ties take the left run.
template <size_t Size>
void merge_runs(char *to, const char *left, const char *middle, const char *end, size_t size,
                mbuf_cmp_fn compare) {
    const char *right = middle;
    const size_t step = Size == 0 ? size : Size;
    while (left != middle && right != end) {
        // Choosing the head by arithmetic spares a branch that no processor can predict.
        size_t take_right = compare(left, right) > 0;
        move_unit<Size>(to, take_right != 0 ? right : left, size);
        right += step * take_right;
        left += step * (1 - take_right);
        to += step;
    }
    size_t rest_left = static_cast<size_t>(middle - left);
    memcpy(to, left, rest_left);
    memcpy(to + rest_left, right, static_cast<size_t>(end - right));
}

template <size_t Size>
void merge_pass(const mbuf *from, mbuf *to, uint64_t width, mbuf_cmp_fn compare) {
    const uint64_t count = from->used;
    for (uint64_t i = 0; i < count; i += 2 * width) {
        uint64_t middle = i + width < count ? i + width : count;
        uint64_t end = i + 2 * width < count ? i + 2 * width : count;
        merge_runs<Size>(unit_at(to, static_cast<uint32_t>(i)),
                         unit_at(from, static_cast<uint32_t>(i)),
                         unit_at(from, static_cast<uint32_t>(middle)),
                         unit_at(from, static_cast<uint32_t>(end)), from->unitsize, compare);
    }
}

// Each round makes two passes, so that the units end where they began.
template <size_t Size>
void merge_rounds(mbuf *b, mbuf *scratch, mbuf_cmp_fn compare) {
    for (uint64_t width = 1; width < b->used; width *= 4) {
        merge_pass<Size>(b, scratch, width, compare);
        merge_pass<Size>(scratch, b, 2 * width, compare);
    }
}

// What differs with the unit size.
struct unit_operations {
    uint32_t unitsize;
    void (*reverse)(mbuf *b);
    void (*merge)(mbuf *b, mbuf *scratch, mbuf_cmp_fn compare);
};

template <size_t Size>
constexpr unit_operations operations_for = {
    .unitsize = Size, .reverse = reverse_units<Size>, .merge = merge_rounds<Size>};

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
    mbuf_assign(&scratch, b);
    operations_of(b).merge(b, &scratch, compare);
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

// The distance of a unit's pointer, or of the end, from the first unit; false for any other pointer.
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

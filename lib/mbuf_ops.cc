#include "lib/mbuf.h"

#include <cstring>

namespace zelta {

namespace {

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
    if (mbuf_valid(b) != 0 || !_mbuf_kind(b).grows)
        return -1;
    return room_for(b, capacity) ? 0 : -1;
}

int mbuf_extend(mbuf *b, uint32_t extra) {
    if (mbuf_valid(b) != 0 || !_mbuf_kind(b).grows)
        return -1;
    return room_for(b, uint64_t{b->used} + extra) ? 0 : -1;
}

int mbuf_erase(mbuf *b, uint32_t start, uint32_t end) {
    if (mbuf_valid(b) != 0 || start > end || end > b->used)
        return -1;
    return splice(b, start, end, nullptr, 0);
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

// How far a unit's pointer, or the end, is from the first unit; false for any other pointer.
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

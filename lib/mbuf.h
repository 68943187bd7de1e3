// Dynamic unit arrays. A header describes units of one size, of any record type, that follow one
// another in one of six kinds of storage. The tag in its first word says which. Units are copied as
// bytes. Every operation first validates its headers with mbuf_valid and refuses one whose tag,
// counts or guard words are wrong, whose unit size is 0, or whose size in bytes exceeds size_t.
//
//     mbuf list = {MBUF_MAGIC_HEAP, sizeof(int), 0, 0, nullptr};
//     mbuf table = {MBUF_MAGIC_HEAP_FIXED, sizeof(int), 0, 20, nullptr};
//     mbuf fixed = {MBUF_MAGIC_GUARDED, sizeof(int), 0, 20,
//                   _mbuf_init_buffer(data, sizeof(int) * 20, MBUF_MAGIC_GUARDED)};
//     mbuf view = {MBUF_MAGIC_EXTERN, sizeof(int), 3, 20, ints};
//
// Here data has sizeof(int) * 20 + guards_size bytes and is aligned for int, and ints has room for
// 20, of which 3 are in use. The heap kinds get their storage on first use.
//
// Units in the library's own storage are aligned for any type. In caller's guarded storage they lie
// one guard word behind its start: see guard_lead in lib/guard.h.
//
// Indexes and counts are units from 0, ranges are [start, end). Only MBUF_MAGIC_HEAP grows; on the
// others an operation whose result does not fit fails. Results are 0 or a count, and -1 for a
// failure, unless stated, and a failed operation leaves the units as they were. Nothing is printed
// but by the debug dump. There are no locks.

#pragma once

#include <cstddef>
#include <cstdint>

#include "lib/guard.h"
#include "lib/mref.h"

namespace zelta {

inline constexpr uint32_t MBUF_MAGIC_HEAP = 0x55AA5571;       // library's block, grows
inline constexpr uint32_t MBUF_MAGIC_HEAP_FIXED = 0x55AA5572; // library's block
inline constexpr uint32_t MBUF_MAGIC_GUARDED = 0x55AA5573;    // caller's block with guard words
inline constexpr uint32_t MBUF_MAGIC_EXTERN = 0x55AA5574;     // caller's memory
inline constexpr uint32_t MBUF_MAGIC_EXTERN_DATA = 0x55AA5575;
inline constexpr uint32_t MBUF_MAGIC_EXTERN_LOCKED = 0x55AA5576; // ... without mbuf_updatesize

// Heap storage is never made with, or grown to, this capacity or a larger one.
inline constexpr uint32_t MBUF_MAX_CAPACITY = 0x2000000;

inline constexpr storage_kind _mbuf_kinds[] = {
    {.tag = MBUF_MAGIC_HEAP, .guarded = true, .owned = true, .grows = true},
    {.tag = MBUF_MAGIC_HEAP_FIXED, .guarded = true, .owned = true},
    {.tag = MBUF_MAGIC_GUARDED, .guarded = true},
    {.tag = MBUF_MAGIC_EXTERN, .resizable = true},
    {.tag = MBUF_MAGIC_EXTERN_DATA, .resizable = true},
    {.tag = MBUF_MAGIC_EXTERN_LOCKED},
};
static_assert(positioned_by_tag(_mbuf_kinds));

struct mbuf {
    uint32_t magic = 0;     // one of the tags
    uint32_t unitsize = 0;  // bytes
    uint32_t used = 0;      // units in use, from the start
    uint32_t capacity = 0;  // units the storage holds
    void *bufptr = nullptr; // the first unit
};

// For mbuf_sort, positive when unit a must come behind unit b; for mbuf_find, 0 when unit b matches
// key a.
using mbuf_cmp_fn = int (*)(const void *a, const void *b);

// --- representation and life ---

// 0 for a valid header. Makes the storage of a heap array that has none yet.
int mbuf_valid(mbuf *b);

// Makes b an empty growing heap array; b owns its storage until mbuf_destroy.
int mbuf_create(mbuf *b, uint32_t unitsize, uint32_t capacity);

// A new header on the heap, for mbuf_delete; null when it cannot be made.
mbuf *mbuf_new(uint32_t unitsize, uint32_t capacity);

// Wipes guarded storage, frees the library's own, and zeroes the header, which is invalid from then
// on. An invalid array, one with damaged guard words included, is left as it is.
int mbuf_destroy(mbuf *b);

// mbuf_destroy for a header of mbuf_new; frees the header too and sets *b to null.
int mbuf_delete(mbuf **b);

// Units in use and capacity; UINT32_MAX for an invalid header.
uint32_t mbuf_size(mbuf *b);
uint32_t mbuf_capacity(mbuf *b);

// Sets the units in use of caller's memory (MBUF_MAGIC_EXTERN and _EXTERN_DATA alone).
int mbuf_updatesize(mbuf *b, uint32_t used);

// Zeroes the whole storage; no units are in use then.
int mbuf_clear(mbuf *b);

// Prepares caller's guarded storage of size + 8 bytes, for units of size bytes in all. Returns the
// units for bufptr, or null for null storage.
void *_mbuf_init_buffer(void *storage, size_t size, uint32_t tag);

// Grows a heap array to hold at least need units. Reports nothing: the capacity afterwards tells.
// Nothing happens to other kinds, at the limit, or without memory.
void _mbuf_expand(mbuf *b, uint32_t need);

// The kind of storage; the tag must be one of the six.
inline const storage_kind &_mbuf_kind(const mbuf *b) {
    return _mbuf_kinds[b->magic - MBUF_MAGIC_HEAP];
}

// Prints the header to standard output without validating; the result of the last print call.
int _mbuf_debug_show(const mbuf *b);

// --- whole arrays; both arrays must have the same unit size and not the same storage ---

int mbuf_assign(mbuf *to, mbuf *from);
int mbuf_append(mbuf *to, mbuf *from);
int mbuf_insert(mbuf *to, uint32_t index, mbuf *from);

// Overwrites from the index on, running past the end if need be.
int mbuf_write(mbuf *to, uint32_t index, mbuf *from);
int mbuf_slice(mbuf *to, mbuf *from, uint32_t start, uint32_t end);

// --- units from memory, which may be the array's own ---

// Overwrites from the index on as mbuf_write does, or appends; units.len counts units.
int mbuf_memcpy(mbuf *b, uint32_t index, mref units);
int mbuf_concat(mbuf *b, mref units);

// Appends the one unit at unit.ptr; unit.len is not looked at.
int mbuf_push_back(mbuf *b, mref unit);

// --- room and order ---

// Room for a capacity, or for extra units behind those in use; MBUF_MAGIC_HEAP only.
int mbuf_reserve(mbuf *b, uint32_t capacity);
int mbuf_extend(mbuf *b, uint32_t extra);

int mbuf_erase(mbuf *b, uint32_t start, uint32_t end);
int mbuf_reverse(mbuf *b);

// Stable; needs memory for a copy of the units.
int mbuf_sort(mbuf *b, mbuf_cmp_fn compare);

// -1, 0 or 1 as the bytes of a sort before, equal to or behind those of b, the shorter of two equal
// beginnings first; -2 for a failure.
int mbuf_compare(mbuf *a, mbuf *b);

// --- single units; len of a reference counts bytes ---

// The index of the first unit at or after start that matches; -1 also for no match. A comparator is
// called as compare(key.ptr, unit), and the key may be shorter than a unit. Without one, all bytes
// of the unit are compared.
int mbuf_find(mbuf *b, uint32_t start, mref key, mbuf_cmp_fn compare);

// Copies the unit at the index out, to at least a unit's memory, or in, from exactly a unit's.
int mbuf_get(mbuf *b, uint32_t index, mref to);
int mbuf_set(mbuf *b, uint32_t index, mref from);

// Removes the last unit after copying it out as mbuf_get does.
int mbuf_pop_back(mbuf *b, mref to);

// The unit at the index, or null; good until the array grows or is destroyed.
void *mbuf_access(mbuf *b, uint32_t index);

// --- iteration: from mbuf_begin, by mbuf_next, until mbuf_end ---
// mbuf_end is just past the last unit. mbuf_next and mbuf_index take a pointer to a unit, or the
// end, and give null or -1 for any other. What mbuf_next gives for the end points to no unit.

void *mbuf_begin(mbuf *b);
void *mbuf_end(mbuf *b);
void *mbuf_next(mbuf *b, const void *unit);
int mbuf_index(mbuf *b, const void *unit);

} // namespace zelta

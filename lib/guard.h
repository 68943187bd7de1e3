// Guarded storage: what strings (lib/mstr.h) and unit arrays (lib/mbuf.h) have in common. Guarded
// storage is framed by two guard words, copies of the owner's kind tag, that reveal an overrun:
//
//     guard word (4 bytes) | data (size bytes) | guard word (4 bytes)
//
// Storage that is given back is wiped first, because settings hold passwords.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zelta {

inline constexpr size_t guard_size = sizeof(uint32_t);
inline constexpr size_t guards_size = 2 * guard_size;

// The largest data whose guarded block still has a size in size_t, also where that has 32 bits.
inline constexpr size_t guard_max_size = SIZE_MAX - guards_size - alignof(max_align_t);

// What a kind of storage allows. Each family has a table with one row for each of its tags.
struct storage_kind {
    uint32_t tag;
    bool guarded = false;   // framed by guard words
    bool owned = false;     // allocated and freed by the library
    bool grows = false;     // replaced by larger storage when an operation needs it
    bool writable = true;   // operations may change it
    bool resizable = false; // the count of used units may be set directly
};

// The tags of a table follow one another, so that a tag tells the position of its row.
template <size_t Count>
constexpr bool positioned_by_tag(const storage_kind (&kinds)[Count]) {
    for (size_t i = 0; i < Count; i++)
        if (kinds[i].tag - kinds[0].tag != i)
            return false;
    return true;
}

// Bytes to leave free at the start of a caller's block that is aligned for T: guarded storage that
// begins there has its data, which follows the first guard word, aligned for T as well.
template <typename T>
inline constexpr size_t guard_lead = alignof(T) > guard_size ? alignof(T) - guard_size : 0;

// Writes both guard words around size zeroed bytes into the caller's block of size + guards_size
// bytes. Returns the data, or null for a null block.
char *guard_init(void *block, size_t size, uint32_t tag);

// True when both guard words around the data still hold the tag. Every operation calls it, so it is
// inline: two comparisons of words.
inline bool guard_intact(const void *data, size_t size, uint32_t tag) {
    const char *bytes = static_cast<const char *>(data);
    uint32_t before, behind;
    memcpy(&before, bytes - guard_size, guard_size);
    memcpy(&behind, bytes + size, guard_size);
    return before == tag && behind == tag;
}

// Overwrites data and guard words with zeros, in a way that no optimiser drops.
void guard_wipe(void *data, size_t size);

// Allocates guarded storage; the data is aligned for any type. Null when there is no memory.
// guard_free wipes and frees what guard_alloc gave.
char *guard_alloc(size_t size, uint32_t tag);
void guard_free(void *data, size_t size);

// Moves data of this size to a larger allocation, fills the rest with zeros and frees the old one.
// For null data all of it is zeros. Null when there is no memory; then the old one is as it was.
char *guard_grow(void *data, size_t size, size_t larger, uint32_t tag);

// The capacity that storage grows to when need is more than capacity: need or twice the capacity,
// whichever is larger; 0 when that reaches the limit, even if need alone would not.
uint32_t grown_capacity(uint32_t capacity, uint32_t need, uint32_t limit);

} // namespace zelta

// Dynamic strings. A header describes a NUL-terminated character buffer in one of five kinds of
// storage. The tag in its first word says which. Headers are ordinary variables of their users,
// initialised in place (forms below) or by mstr_create. Every operation first validates its headers
// with mstr_valid and refuses one whose tag, counts or guard words are wrong.
//
//     mstr line = {MSTR_MAGIC_HEAP, 0, 0, nullptr}; // gets its storage on first use
//     mstr id = mstr_guarded(data, 256);            // data has mstr_storage(256) bytes
//     mstr path = mstr_array(array);                // a char array of any size
//     mstr text = {MSTR_MAGIC_CSTR, 0, length, _mstr_init_buffer(p, length + 1)}; // strlen(p)
//     mstr word = {MSTR_MAGIC_CONST, 0, 0, const_cast<char *>("literal")};
//
// Only heap strings grow; on the others an operation whose result does not fit fails and leaves the
// string as it was, except mstr_sprintf and mstr_getdelim, which fill the room there is. Results
// are 0 or a count, and -1 for a failure, unless stated. Nothing is printed but by the debug dump.
// There are no locks, and also the read-only operations write to the headers they are given.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "lib/guard.h"

namespace zelta {

inline constexpr uint32_t MSTR_MAGIC_HEAP = 0x5AA55A71;    // library's block, grows
inline constexpr uint32_t MSTR_MAGIC_GUARDED = 0x5AA55A72; // caller's block with guard words
inline constexpr uint32_t MSTR_MAGIC_ARRAY = 0x5AA55A73;   // caller's char array
inline constexpr uint32_t MSTR_MAGIC_CSTR = 0x5AA55A74;    // caller's writable string
inline constexpr uint32_t MSTR_MAGIC_CONST = 0x5AA55A75;   // constant string: read only

// Heap storage is never made with, or grown to, this capacity or a larger one.
inline constexpr uint32_t MSTR_MAX_CAPACITY = 0x200000;

inline constexpr storage_kind _mstr_kinds[] = {
    {.tag = MSTR_MAGIC_HEAP, .guarded = true, .owned = true, .grows = true},
    {.tag = MSTR_MAGIC_GUARDED, .guarded = true},
    {.tag = MSTR_MAGIC_ARRAY},
    {.tag = MSTR_MAGIC_CSTR},
    {.tag = MSTR_MAGIC_CONST, .writable = false}, // its capacity is its length
};
static_assert(positioned_by_tag(_mstr_kinds));

struct mstr {
    uint32_t magic = 0;    // one of the tags
    uint32_t lastlen = 0;  // length when last measured; after a change through c_str it may differ
    uint32_t capacity = 0; // characters the storage holds, terminator not counted
    char *c_str = nullptr; // the characters, NUL-terminated
};

// Bytes of guarded storage for a number of characters.
constexpr size_t mstr_storage(uint32_t capacity) {
    return size_t{capacity} + 1 + guards_size;
}

// --- representation and life ---

// 0 for a valid header. Makes the storage of a heap string that has none yet. Measures a constant
// string, and a string that was made longer in place.
int mstr_valid(mstr *s);

// Makes s an empty heap string of the given capacity; s owns its storage until mstr_destroy.
int mstr_create(mstr *s, uint32_t capacity);

// A new header on the heap, for mstr_delete; null without memory or for a capacity too large.
mstr *mstr_new(uint32_t capacity);

// Wipes guarded storage, frees the library's own, and zeroes the header, which is invalid from then
// on. An invalid string, one with damaged guard words included, is left as it is.
int mstr_destroy(mstr *s);

// mstr_destroy for a header of mstr_new; frees the header too and sets *s to null.
int mstr_delete(mstr **s);

// The length in characters.
int mstr_length(mstr *s);

// The capacity in characters; UINT32_MAX for an invalid header.
uint32_t mstr_capacity(mstr *s);

// Empties the string and zeroes its characters.
int mstr_clear(mstr *s);

// Prepares caller's guarded storage of mstr_storage(capacity) bytes. Returns the characters for
// c_str, or null for null storage.
char *_mstr_init_data(void *storage, uint32_t capacity, uint32_t tag);

// Terminates a caller's array of size bytes at its last byte and returns it.
char *_mstr_init_buffer(char *buffer, size_t size);

// Headers for caller's memory: an empty string in a block of mstr_storage(capacity) bytes, and the
// text of a whole array.
mstr mstr_guarded(void *storage, uint32_t capacity);
template <size_t Size>
mstr mstr_array(char (&array)[Size]) {
    return {MSTR_MAGIC_ARRAY, 0, Size - 1, _mstr_init_buffer(array, Size)};
}

// Grows a heap string to hold at least need characters. Reports nothing: the capacity afterwards
// tells. Nothing happens to other kinds, at the limit, or without memory.
void _mstr_expand(mstr *s, uint32_t need);

// Measures a valid string, refreshes lastlen, and returns the length.
uint32_t _mstr_measure(mstr *s);

// The kind of storage; the tag must be one of the five.
inline const storage_kind &_mstr_kind(const mstr *s) {
    return _mstr_kinds[s->magic - MSTR_MAGIC_HEAP];
}

// True for a valid string that may be changed.
inline bool _mstr_writable(mstr *s) {
    return mstr_valid(s) == 0 && _mstr_kind(s).writable;
}

// Grows the string when it needs that; true when it then holds need characters.
inline bool _mstr_room(mstr *s, uint64_t need) {
    if (need > UINT32_MAX)
        return false;
    _mstr_expand(s, static_cast<uint32_t>(need));
    return s->capacity >= need;
}

// Prints the header and its text to standard output without validating; the result of the last
// print call.
int _mstr_debug_show(const mstr *s);

// --- copying and editing; positions and lengths are characters, ranges are [start, end) ---
// The same header in two positions is refused. So is a NUL-terminated text that is null, or that
// lies in the storage of the string that is written. A source string must not wrap the characters
// of a heap destination: growing would free them.

int mstr_assign(mstr *to, mstr *from);
int mstr_append(mstr *to, mstr *from);
int mstr_insert(mstr *to, uint32_t position, mstr *from);
int mstr_slice(mstr *to, mstr *from, uint32_t start, uint32_t end);
int mstr_strcpy(mstr *to, const char *text);
int mstr_strcat(mstr *to, const char *text);
int mstr_erase(mstr *s, uint32_t start, uint32_t end);

// Removes characters from the left and right end; refused when there are fewer in all.
int mstr_trim(mstr *s, uint32_t left, uint32_t right);

// Removes white space (isspace) on the sides whose flag is set; the number of characters removed.
int mstr_strip(mstr *s, bool left, bool right);

// Replaces old_text by new_text from left to right, at most max_count times (0: no limit). Inserted
// text is not searched again. The number of replacements. A failure part-way keeps those made so
// far; when an insertion failed, the text that it should replace is gone.
int mstr_replace(mstr *s, mstr *old_text, mstr *new_text, uint32_t max_count);

// Room for a capacity, or for extra characters behind the text; heap strings only.
int mstr_reserve(mstr *s, uint32_t capacity);
int mstr_extend(mstr *s, uint32_t extra);

// --- searching and splitting ---

// The index of the first match at or after start; -1 also for no match and an empty needle.
int mstr_find(mstr *s, uint32_t start, mstr *needle);
int mstr_find_cstr(mstr *s, uint32_t start, const char *needle);

// The number of matches that do not overlap.
int mstr_count(mstr *s, mstr *needle);

// Cuts the first field off source: head gets the text before the separator, source keeps the text
// behind it, 1; without a separator head gets all, source becomes empty, 0. On -1 head may have
// been filled already.
int mstr_partition(mstr *head, mstr *source, mstr *separator);
int mstr_partition_cstr(mstr *head, mstr *source, const char *separator);

// -1, 0 or 1 as a sorts before, equal to or behind b, bytes taken as unsigned; -2 for a failure,
// which the same header twice is.
int mstr_compare(mstr *a, mstr *b);

// The characters, good until the next operation that may grow the string; null for a failure.
char *mstr_get(mstr *s);

// --- formatting and reading ---

// Formats as printf(3) does. The length of the whole text; when it is above the capacity, the text
// was cut to that. -1, and the text stays as it was, for what cannot be formatted and for a format
// in the string's own storage. An argument in that storage is not noticed and must not be given:
// growing frees it while it is still read.
[[gnu::format(printf, 2, 3)]] int mstr_sprintf(mstr *to, const char *format, ...);

// Reads up to and including the delimiter; zero bytes are data too. 0 for a whole record, 1 when the
// room ran out first, 2 when the file ended first, -1 for a bad argument or a read error. The
// string keeps what was read.
int mstr_getdelim(mstr *to, FILE *stream, char delimiter);
int mstr_getline(mstr *to, FILE *stream);

} // namespace zelta

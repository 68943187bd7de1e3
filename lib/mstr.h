// Dynamic strings. A header describes a NUL-terminated character buffer in one of five kinds of
// storage, told apart by the tag in its first word. Headers are ordinary variables of their users,
// initialised in place (forms below) or by mstr_create. Every operation first validates its headers
// with mstr_valid and refuses one whose tag, counts or guard words are wrong.
//
//     mstr line = {MSTR_MAGIC_HEAP, 0, 0, nullptr};
//     mstr id = {MSTR_MAGIC_GUARDED, 0, 256, _mstr_init_data(data, 256, MSTR_MAGIC_GUARDED)};
//     mstr path = {MSTR_MAGIC_ARRAY, 0, 31, _mstr_init_buffer(array, 32)};
//     mstr text = {MSTR_MAGIC_CSTR, 0, length, _mstr_init_buffer(p, length + 1)};
//     mstr word = {MSTR_MAGIC_CONST, 0, 0, const_cast<char *>("literal")};
//
// data having mstr_storage(256) bytes, array 32, and p being a writable text of this length. A heap
// string gets its storage on first use.
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

struct mstr {
    uint32_t magic = 0;   // one of the tags
    uint32_t lastlen = 0; // length when last measured, a cache: never to be relied on as the length
    uint32_t capacity = 0; // characters the storage holds, terminator not counted
    char *c_str = nullptr; // the characters, NUL-terminated
};

// Bytes of guarded storage for a number of characters.
constexpr size_t mstr_storage(uint32_t capacity) {
    return size_t{capacity} + 1 + guards_size;
}

// --- representation and life ---

// 0 for a valid header. Makes the storage of a heap string that has none yet, measures a string
// whose characters were changed in place, and a constant one on first use.
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

// Grows a heap string to hold at least need characters. Reports nothing: the capacity afterwards
// tells. Nothing happens to other kinds, at the limit, or without memory.
void _mstr_expand(mstr *s, uint32_t need);

// Measures a valid string, refreshes lastlen, and returns the length.
uint32_t _mstr_measure(mstr *s);

// Prints the header and its text to standard output without validating; the result of the last
// print call.
int _mstr_debug_show(const mstr *s);

// --- copying and editing; positions and lengths are characters, ranges are [start, end) ---
// The same header in two positions is refused. A NUL-terminated text must not be null and must not
// lie in the storage of the string that is written; nor may a source string wrap a heap
// destination's characters.

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

// Replaces old_text by new_text from left to right, never inside what was just inserted, at most
// max_count times (0: no limit); the number of replacements. A failure part-way keeps those made so
// far, and when an insertion failed, its match is gone.
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

// Formats as printf(3) does. The length of the whole text: above the capacity, the text was cut to
// that. -1 for what cannot be formatted at all, and the text stays as it was.
[[gnu::format(printf, 2, 3)]] int mstr_sprintf(mstr *to, const char *format, ...);

// Reads up to and including the delimiter, any other bytes being data: 0 for a whole record, 1 when
// the room ran out before it, 2 at the end of the file, -1 for a bad argument or a read error. The
// string keeps what was read.
int mstr_getdelim(mstr *to, FILE *stream, char delimiter);
int mstr_getline(mstr *to, FILE *stream);

} // namespace zelta

#include "lib/mstr.h"

#include <cctype>
#include <cstdarg>
#include <cstring>

namespace zelta {

namespace {

bool writable(mstr *s) {
    return mstr_valid(s) == 0 && s->magic != MSTR_MAGIC_CONST;
}

// The common check of an operation that writes one string from another.
bool copyable(mstr *to, mstr *from) {
    return to != from && mstr_valid(to) == 0 && mstr_valid(from) == 0 &&
           to->magic != MSTR_MAGIC_CONST;
}

// True for a text in the storage of s, where growing would free it before it is copied.
bool lies_inside(const mstr *s, const char *text) {
    uintptr_t begin = reinterpret_cast<uintptr_t>(s->c_str);
    return reinterpret_cast<uintptr_t>(text) - begin <= s->capacity;
}

bool room_for(mstr *s, uint64_t need) {
    if (need > UINT32_MAX)
        return false;
    _mstr_expand(s, static_cast<uint32_t>(need));
    return s->capacity >= need;
}

// The one edit: replaces the characters [start, end) of a writable string of the given length by
// count bytes of text. Whoever replaces everything passes length 0 and saves measuring the old
// text.
int splice(mstr *s, uint32_t length, uint32_t start, uint32_t end, const char *text,
           uint32_t count) {
    uint64_t need = uint64_t{length} - (end - start) + count;
    if (!room_for(s, need))
        return -1;
    char *at = s->c_str + start;
    if (length > end)
        memmove(at + count, s->c_str + end, length - end);
    memmove(at, text, count);
    s->lastlen = static_cast<uint32_t>(need);
    s->c_str[need] = '\0';
    return 0;
}

// The index of the first needle in s at or after start, both measured; -1 for none.
int64_t search(const mstr *s, uint32_t length, uint32_t start, const mstr *needle, uint32_t count) {
    if (count == 0 || count > length || start > length - count)
        return -1;
    const char *from = s->c_str + start;
    const void *match = memmem(from, length - start, needle->c_str, count);
    return match == nullptr ? -1 : static_cast<const char *>(match) - s->c_str;
}

// The same, measuring both first. A single character is found on the way to the end of s.
int64_t measure_and_search(mstr *s, uint32_t start, mstr *needle) {
    const uint32_t count = _mstr_measure(needle);
    if (count != 1)
        return search(s, _mstr_measure(s), start, needle, count);
    const char *from = s->c_str + (start == 0 ? 0 : strnlen(s->c_str, start));
    const char *at = strchrnul(from, *needle->c_str);
    s->lastlen = static_cast<uint32_t>(at + strlen(at) - s->c_str);
    return *at == '\0' ? -1 : at - s->c_str;
}

uint32_t text_length(const char *text) {
    return static_cast<uint32_t>(strnlen(text, MSTR_MAX_CAPACITY));
}

bool space(char c) {
    return isspace(static_cast<unsigned char>(c)) != 0;
}

} // namespace

int mstr_assign(mstr *to, mstr *from) {
    if (!copyable(to, from))
        return -1;
    return splice(to, 0, 0, 0, from->c_str, _mstr_measure(from));
}

int mstr_append(mstr *to, mstr *from) {
    if (!copyable(to, from))
        return -1;
    uint32_t length = _mstr_measure(to);
    return splice(to, length, length, length, from->c_str, _mstr_measure(from));
}

int mstr_insert(mstr *to, uint32_t position, mstr *from) {
    if (!copyable(to, from))
        return -1;
    uint32_t length = _mstr_measure(to);
    if (position > length)
        return -1;
    return splice(to, length, position, position, from->c_str, _mstr_measure(from));
}

int mstr_slice(mstr *to, mstr *from, uint32_t start, uint32_t end) {
    if (!copyable(to, from) || start > end || end > _mstr_measure(from))
        return -1;
    return splice(to, 0, 0, 0, from->c_str + start, end - start);
}

int mstr_strcpy(mstr *to, const char *text) {
    if (!writable(to) || text == nullptr || lies_inside(to, text))
        return -1;
    return splice(to, 0, 0, 0, text, text_length(text));
}

int mstr_strcat(mstr *to, const char *text) {
    if (!writable(to) || text == nullptr || lies_inside(to, text))
        return -1;
    uint32_t length = _mstr_measure(to);
    return splice(to, length, length, length, text, text_length(text));
}

int mstr_erase(mstr *s, uint32_t start, uint32_t end) {
    if (!writable(s))
        return -1;
    uint32_t length = _mstr_measure(s);
    if (end > length || start > end)
        return -1;
    return splice(s, length, start, end, "", 0);
}

int mstr_trim(mstr *s, uint32_t left, uint32_t right) {
    if (!writable(s))
        return -1;
    uint32_t length = _mstr_measure(s);
    if (uint64_t{left} + right > length)
        return -1;
    return splice(s, length - right, 0, left, "", 0);
}

int mstr_strip(mstr *s, bool left, bool right) {
    if (!writable(s))
        return -1;
    uint32_t before = _mstr_measure(s), start = 0, end = before;
    while (left && start < end && space(s->c_str[start]))
        start++;
    while (right && end > start && space(s->c_str[end - 1]))
        end--;
    splice(s, end, 0, start, "", 0);
    return static_cast<int>(before - s->lastlen);
}

int mstr_replace(mstr *s, mstr *old_text, mstr *new_text, uint32_t max_count) {
    if (s == old_text || s == new_text || old_text == new_text || !writable(s) ||
        mstr_valid(old_text) != 0 || mstr_valid(new_text) != 0)
        return -1;
    uint32_t old_length = _mstr_measure(old_text), new_length = _mstr_measure(new_text);
    int count = 0;
    for (int at = mstr_find(s, 0, old_text); at >= 0;) {
        uint32_t start = static_cast<uint32_t>(at);
        if (mstr_erase(s, start, start + old_length) != 0 || mstr_insert(s, start, new_text) != 0)
            return -1;
        count++;
        if (max_count != 0 && static_cast<uint32_t>(count) == max_count)
            break;
        at = mstr_find(s, start + new_length, old_text);
    }
    return count;
}

int mstr_reserve(mstr *s, uint32_t capacity) {
    if (mstr_valid(s) != 0 || s->magic != MSTR_MAGIC_HEAP)
        return -1;
    return room_for(s, capacity) ? 0 : -1;
}

int mstr_extend(mstr *s, uint32_t extra) {
    if (mstr_valid(s) != 0 || s->magic != MSTR_MAGIC_HEAP)
        return -1;
    return room_for(s, uint64_t{_mstr_measure(s)} + extra) ? 0 : -1;
}

int mstr_find(mstr *s, uint32_t start, mstr *needle) {
    if (s == needle || mstr_valid(s) != 0 || mstr_valid(needle) != 0)
        return -1;
    return static_cast<int>(measure_and_search(s, start, needle));
}

int mstr_find_cstr(mstr *s, uint32_t start, const char *needle) {
    mstr temporary = {.magic = MSTR_MAGIC_HEAP};
    int result = mstr_strcpy(&temporary, needle) == 0 ? mstr_find(s, start, &temporary) : -1;
    mstr_destroy(&temporary);
    return result;
}

int mstr_count(mstr *s, mstr *needle) {
    if (s == needle || mstr_valid(s) != 0 || mstr_valid(needle) != 0)
        return -1;
    uint32_t length = _mstr_measure(s), step = _mstr_measure(needle);
    int count = 0;
    for (int64_t at = search(s, length, 0, needle, step); at >= 0;
         at = search(s, length, static_cast<uint32_t>(at) + step, needle, step))
        count++;
    return count;
}

int mstr_partition(mstr *head, mstr *source, mstr *separator) {
    if (head == source || head == separator || source == separator || !writable(head) ||
        !writable(source) || mstr_valid(separator) != 0)
        return -1;
    int64_t at = measure_and_search(source, 0, separator);
    uint32_t length = source->lastlen, width = separator->lastlen;
    uint32_t field = at < 0 ? length : static_cast<uint32_t>(at);
    if (splice(head, 0, 0, 0, source->c_str, field) != 0)
        return -1;
    if (at < 0)
        return mstr_clear(source);
    return splice(source, length, 0, field + width, "", 0) == 0 ? 1 : -1;
}

int mstr_partition_cstr(mstr *head, mstr *source, const char *separator) {
    if (!writable(head) || !writable(source) || lies_inside(head, separator) ||
        lies_inside(source, separator))
        return -1;
    mstr temporary = {.magic = MSTR_MAGIC_HEAP};
    int result =
        mstr_strcpy(&temporary, separator) == 0 ? mstr_partition(head, source, &temporary) : -1;
    mstr_destroy(&temporary);
    return result;
}

int mstr_compare(mstr *a, mstr *b) {
    if (a == b || mstr_valid(a) != 0 || mstr_valid(b) != 0)
        return -2;
    // Some C libraries return the difference of two bytes, which could be the -2 of a failure.
    int order = strcmp(a->c_str, b->c_str);
    return (order > 0) - (order < 0);
}

char *mstr_get(mstr *s) {
    return mstr_valid(s) == 0 ? s->c_str : nullptr;
}

int mstr_sprintf(mstr *to, const char *format, ...) {
    if (!writable(to))
        return -1;
    char aside[256]; // what cannot be formatted must not reach the string
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    int length = vsnprintf(aside, sizeof aside, format, arguments);
    if (length >= 0) {
        const uint32_t whole = static_cast<uint32_t>(length);
        to->lastlen = whole <= to->capacity || room_for(to, whole) ? whole : to->capacity;
        if (whole < sizeof aside)
            memcpy(to->c_str, aside, to->lastlen);
        else
            length = vsnprintf(to->c_str, size_t{to->lastlen} + 1, format, again);
        to->c_str[to->lastlen] = '\0';
    }
    va_end(again);
    va_end(arguments);
    return length < 0 ? -1 : length;
}

namespace {

// fgets at most so many bytes at once: what it gets is filled first.
constexpr uint32_t piece_room = 4096;

// Reads up to and including the next line end, or as much as there is room for. Because fgets does
// not tell how much it read, and zero bytes are data, the room is filled with line ends before. The
// stream is without an error before, so that one after it says that the line is not whole.
uint32_t read_line(char *at, uint32_t room, FILE *stream) {
    memset(at, '\n', room);
    const bool read = fgets_unlocked(at, static_cast<int>(room) + 1, stream) != nullptr;
    const void *end = memchr(at, '\n', room);
    uint32_t count =
        end == nullptr ? room : static_cast<uint32_t>(static_cast<const char *>(end) - at);
    if (read && (feof_unlocked(stream) != 0 || ferror_unlocked(stream) != 0))
        count--; // the terminator
    else if (read && end != nullptr)
        count++; // the line end
    return count;
}

// The same for any delimiter, byte by byte.
uint32_t read_bytes(char *at, uint32_t room, FILE *stream, char delimiter) {
    uint32_t count = 0;
    for (int c; count < room && (c = getc_unlocked(stream)) != EOF;) {
        at[count++] = static_cast<char>(c);
        if (at[count - 1] == delimiter)
            break;
    }
    return count;
}

} // namespace

int mstr_getdelim(mstr *to, FILE *stream, char delimiter) {
    if (stream == nullptr)
        mstr_clear(to);
    if (stream == nullptr || !writable(to))
        return -1;
    int result = 1;
    to->lastlen = 0;
    while (result == 1 && (to->lastlen < to->capacity || room_for(to, to->lastlen + uint64_t{1}))) {
        uint32_t left = to->capacity - to->lastlen, room = left < piece_room ? left : piece_room;
        char *at = to->c_str + to->lastlen;
        uint32_t count = delimiter == '\n' && ferror_unlocked(stream) == 0
                             ? read_line(at, room, stream)
                             : read_bytes(at, room, stream, delimiter);
        to->lastlen += count;
        if (count > 0 && at[count - 1] == delimiter)
            result = 0;
        else if (count < room)
            result = feof(stream) != 0 ? 2 : -1;
    }
    memset(to->c_str + to->lastlen, 0, to->capacity - to->lastlen);
    to->c_str[to->lastlen] = '\0';
    return result;
}

int mstr_getline(mstr *to, FILE *stream) {
    return mstr_getdelim(to, stream, '\n');
}

} // namespace zelta

#include "lib/mstr.h"

#include <cctype>
#include <cstdarg>
#include <cstring>

namespace zelta {

namespace {

// The common check of an operation that writes one string from another.
bool copyable(mstr *to, mstr *from) {
    return to != from && _mstr_writable(to) && mstr_valid(from) == 0;
}

// True for a text in the storage of s, where growing would free it before it is copied.
bool lies_inside(const mstr *s, const char *text) {
    uintptr_t begin = reinterpret_cast<uintptr_t>(s->c_str);
    return reinterpret_cast<uintptr_t>(text) - begin <= s->capacity;
}

// The one edit: replaces the characters [start, end) of a writable string of the given length by
// count bytes of text. To replace the whole text, pass length 0: nobody then measures the old one.
int splice(mstr *s, uint32_t length, uint32_t start, uint32_t end, const char *text,
           uint32_t count) {
    uint64_t need = uint64_t{length} - (end - start) + count;
    if (!_mstr_room(s, need))
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

// The same, but measures both first. A needle of one character is found while s is measured.
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
    if (!_mstr_writable(to) || text == nullptr || lies_inside(to, text))
        return -1;
    return splice(to, 0, 0, 0, text, text_length(text));
}

int mstr_strcat(mstr *to, const char *text) {
    if (!_mstr_writable(to) || text == nullptr || lies_inside(to, text))
        return -1;
    uint32_t length = _mstr_measure(to);
    return splice(to, length, length, length, text, text_length(text));
}

int mstr_erase(mstr *s, uint32_t start, uint32_t end) {
    if (!_mstr_writable(s))
        return -1;
    uint32_t length = _mstr_measure(s);
    if (end > length || start > end)
        return -1;
    return splice(s, length, start, end, "", 0);
}

int mstr_trim(mstr *s, uint32_t left, uint32_t right) {
    if (!_mstr_writable(s))
        return -1;
    uint32_t length = _mstr_measure(s);
    if (uint64_t{left} + right > length)
        return -1;
    return splice(s, length - right, 0, left, "", 0);
}

int mstr_strip(mstr *s, bool left, bool right) {
    if (!_mstr_writable(s))
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
    if (s == old_text || s == new_text || old_text == new_text || !_mstr_writable(s) ||
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
    if (mstr_valid(s) != 0 || !_mstr_kind(s).grows)
        return -1;
    return _mstr_room(s, capacity) ? 0 : -1;
}

int mstr_extend(mstr *s, uint32_t extra) {
    if (mstr_valid(s) != 0 || !_mstr_kind(s).grows)
        return -1;
    return _mstr_room(s, uint64_t{_mstr_measure(s)} + extra) ? 0 : -1;
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
    if (head == source || head == separator || source == separator || !_mstr_writable(head) ||
        !_mstr_writable(source) || mstr_valid(separator) != 0)
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
    if (!_mstr_writable(head) || !_mstr_writable(source) || lies_inside(head, separator) ||
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
    // Some C libraries return the difference of two bytes: that could be -2, which means a failure.
    int order = strcmp(a->c_str, b->c_str);
    return (order > 0) - (order < 0);
}

char *mstr_get(mstr *s) {
    return mstr_valid(s) == 0 ? s->c_str : nullptr;
}

int mstr_sprintf(mstr *to, const char *format, ...) {
    if (!_mstr_writable(to) || lies_inside(to, format))
        return -1;
    char aside[256]; // formatted here first, because a failure must leave the string as it was
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    int length = vsnprintf(aside, sizeof aside, format, arguments);
    if (length >= 0) {
        const uint32_t whole = static_cast<uint32_t>(length);
        to->lastlen = whole <= to->capacity || _mstr_room(to, whole) ? whole : to->capacity;
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

} // namespace zelta

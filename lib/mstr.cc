#include "lib/mstr.h"

#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace zelta {

namespace {

static_assert(MSTR_MAX_CAPACITY - 1 <= INT32_MAX, "lengths are int results");

// What lies between the guard words: the characters and their terminator.
size_t data_size(uint32_t capacity) {
    return size_t{capacity} + 1;
}

char *make_storage(uint32_t capacity) {
    if (capacity >= MSTR_MAX_CAPACITY)
        return nullptr;
    return guard_alloc(data_size(capacity), MSTR_MAGIC_HEAP);
}

// Finds the terminator when it is not where lastlen says. A constant string gets its length and its
// capacity here.
int remeasure(mstr *s) {
    const bool constant = !_mstr_kind(s).writable;
    size_t most = constant ? MSTR_MAX_CAPACITY : data_size(s->capacity);
    s->lastlen = 0;
    size_t length = strnlen(s->c_str, most);
    if (length == most)
        return -1;
    s->lastlen = static_cast<uint32_t>(length);
    if (constant)
        s->capacity = s->lastlen;
    return 0;
}

} // namespace

int mstr_valid(mstr *s) {
    if (s == nullptr || s->magic - MSTR_MAGIC_HEAP >= std::size(_mstr_kinds) ||
        s->capacity < s->lastlen)
        return -1;
    if (s->c_str == nullptr) {
        if (!_mstr_kind(s).owned)
            return -1;
        s->c_str = make_storage(s->capacity);
        if (s->c_str == nullptr)
            return -1;
    }
    if (_mstr_kind(s).guarded && !guard_intact(s->c_str, data_size(s->capacity), s->magic))
        return -1;
    return s->c_str[s->lastlen] == '\0' ? 0 : remeasure(s);
}

int mstr_create(mstr *s, uint32_t capacity) {
    if (s != nullptr)
        *s = {MSTR_MAGIC_HEAP, 0, capacity, make_storage(capacity)};
    return mstr_valid(s); // tries once more to make the storage that is missing
}

mstr *mstr_new(uint32_t capacity) {
    mstr *s = static_cast<mstr *>(malloc(sizeof(mstr)));
    if (mstr_create(s, capacity) == 0)
        return s;
    free(s);
    return nullptr;
}

int mstr_destroy(mstr *s) {
    if (mstr_valid(s) != 0)
        return -1;
    if (_mstr_kind(s).owned)
        guard_free(s->c_str, data_size(s->capacity));
    else if (_mstr_kind(s).guarded)
        guard_wipe(s->c_str, data_size(s->capacity));
    *s = {};
    return 0;
}

int mstr_delete(mstr **s) {
    if (s == nullptr || mstr_destroy(*s) != 0)
        return -1;
    free(*s);
    *s = nullptr;
    return 0;
}

int mstr_length(mstr *s) {
    return mstr_valid(s) == 0 ? static_cast<int>(_mstr_measure(s)) : -1;
}

uint32_t mstr_capacity(mstr *s) {
    return mstr_valid(s) == 0 ? s->capacity : UINT32_MAX;
}

int mstr_clear(mstr *s) {
    if (!_mstr_writable(s))
        return -1;
    memset(s->c_str, 0, s->capacity);
    s->lastlen = 0;
    return 0;
}

char *_mstr_init_data(void *storage, uint32_t capacity, uint32_t tag) {
    return guard_init(storage, data_size(capacity), tag);
}

char *_mstr_init_buffer(char *buffer, size_t size) {
    buffer[size - 1] = '\0';
    return buffer;
}

mstr mstr_guarded(void *storage, uint32_t capacity) {
    return {MSTR_MAGIC_GUARDED, 0, capacity,
            _mstr_init_data(storage, capacity, MSTR_MAGIC_GUARDED)};
}

void _mstr_expand(mstr *s, uint32_t need) {
    if (!_mstr_kind(s).grows || s->capacity >= need)
        return;
    uint32_t capacity = grown_capacity(s->capacity, need, MSTR_MAX_CAPACITY);
    if (capacity == 0)
        return;
    char *grown = guard_grow(s->c_str, data_size(s->capacity), data_size(capacity), s->magic);
    if (grown == nullptr)
        return;
    grown[s->capacity] = '\0'; // the old terminator's place; any byte may stand there
    s->capacity = capacity;
    s->c_str = grown;
}

uint32_t _mstr_measure(mstr *s) {
    s->lastlen = static_cast<uint32_t>(strlen(s->c_str)); // a valid string has its terminator
    return s->lastlen;
}

int _mstr_debug_show(const mstr *s) {
    if (s == nullptr)
        return puts("mstr: NULL pointer!");
    printf("mstr: 0x%08" PRIXPTR "\n", reinterpret_cast<uintptr_t>(s));
    printf("  magic: 0x%08" PRIX32 "\n", s->magic);
    printf("  lastlen: %" PRIu32 "\n", s->lastlen);
    printf("  capacity: %" PRIu32 "\n", s->capacity);
    return printf("  c_str: 0x%08" PRIXPTR " \"%s\"\n", reinterpret_cast<uintptr_t>(s->c_str),
                  s->c_str != nullptr ? s->c_str : "(null)");
}

} // namespace zelta

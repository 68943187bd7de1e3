#include "lib/mstr.h"

#include <cinttypes>
#include <cstdlib>
#include <cstring>

namespace zelta {

namespace {

constexpr storage_kind kinds[] = {
    {.guarded = true, .owned = true}, // HEAP
    {.guarded = true},                // GUARDED
    {},                               // ARRAY
    {},                               // CSTR
    {},                               // CONST
};
constexpr uint32_t kind_count = sizeof kinds / sizeof kinds[0];
static_assert(MSTR_MAGIC_CONST - MSTR_MAGIC_HEAP + 1 == kind_count);
static_assert(MSTR_MAX_CAPACITY - 1 <= INT32_MAX, "lengths are int results");

const storage_kind &kind_of(const mstr *s) {
    return kinds[s->magic - MSTR_MAGIC_HEAP];
}

// What lies between the guard words: the characters and their terminator.
size_t data_size(uint32_t capacity) {
    return size_t{capacity} + 1;
}

char *make_storage(uint32_t capacity) {
    if (capacity >= MSTR_MAX_CAPACITY)
        return nullptr;
    return guard_alloc(data_size(capacity), MSTR_MAGIC_HEAP);
}

// Finds the terminator again after the characters were changed in place; a constant string gets its
// length and capacity here.
int remeasure(mstr *s) {
    bool constant = s->magic == MSTR_MAGIC_CONST;
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
    if (s == nullptr || s->magic - MSTR_MAGIC_HEAP >= kind_count || s->capacity < s->lastlen)
        return -1;
    if (s->c_str == nullptr) {
        if (!kind_of(s).owned)
            return -1;
        s->c_str = make_storage(s->capacity);
        if (s->c_str == nullptr)
            return -1;
    }
    if (kind_of(s).guarded && !guard_intact(s->c_str, data_size(s->capacity), s->magic))
        return -1;
    return s->c_str[s->lastlen] == '\0' ? 0 : remeasure(s);
}

int mstr_create(mstr *s, uint32_t capacity) {
    if (s != nullptr)
        *s = {.magic = MSTR_MAGIC_HEAP,
              .lastlen = 0,
              .capacity = capacity,
              .c_str = make_storage(capacity)};
    return mstr_valid(s);
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
    if (kind_of(s).owned)
        guard_free(s->c_str, data_size(s->capacity));
    else if (kind_of(s).guarded)
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
    if (mstr_valid(s) != 0 || s->magic == MSTR_MAGIC_CONST)
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

void _mstr_expand(mstr *s, uint32_t need) {
    if (s->magic != MSTR_MAGIC_HEAP || s->capacity >= need)
        return;
    uint32_t capacity = grown_capacity(s->capacity, need, MSTR_MAX_CAPACITY);
    if (capacity == 0)
        return;
    char *grown = guard_grow(s->c_str, data_size(s->capacity), data_size(capacity), s->magic);
    if (grown == nullptr)
        return;
    grown[s->capacity] = '\0'; // what stood behind the room for characters is none of them
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

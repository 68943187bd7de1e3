#include "lib/guard.h"

#include <cstdlib>
#include <cstring>

namespace zelta {

namespace {

// malloc returns an address that is aligned for any type, and data that follows a guard word of 4
// bytes there would not be. So the guard word begins this many bytes later, and the data begins at
// the next aligned address.
constexpr size_t heap_lead = guard_lead<max_align_t>;

// Guard words around data whose bytes are not set yet; null for a null block.
char *frame(void *block, size_t size, uint32_t tag) {
    if (block == nullptr)
        return nullptr;
    char *data = static_cast<char *>(block) + guard_size;
    memcpy(data - guard_size, &tag, guard_size);
    memcpy(data + size, &tag, guard_size);
    return data;
}

} // namespace

char *guard_init(void *block, size_t size, uint32_t tag) {
    char *data = frame(block, size, tag);
    if (data != nullptr)
        memset(data, 0, size);
    return data;
}

void guard_wipe(void *data, size_t size) {
    explicit_bzero(static_cast<char *>(data) - guard_size, size + guards_size);
}

char *guard_alloc(size_t size, uint32_t tag) {
    return guard_grow(nullptr, 0, size, tag);
}

char *guard_grow(void *data, size_t size, size_t larger, uint32_t tag) {
    char *block = static_cast<char *>(malloc(heap_lead + larger + guards_size));
    if (block == nullptr)
        return nullptr;
    char *grown = frame(block + heap_lead, larger, tag);
    if (data == nullptr) {
        size = 0;
    } else {
        memcpy(grown, data, size);
        guard_free(data, size);
    }
    memset(grown + size, 0, larger - size);
    return grown;
}

void guard_free(void *data, size_t size) {
    guard_wipe(data, size);
    free(static_cast<char *>(data) - guard_size - heap_lead);
}

uint32_t grown_capacity(uint32_t capacity, uint32_t need, uint32_t limit) {
    uint64_t doubled = uint64_t{capacity} * 2;
    uint64_t wanted = need > doubled ? need : doubled;
    return wanted < limit ? static_cast<uint32_t>(wanted) : 0;
}

} // namespace zelta

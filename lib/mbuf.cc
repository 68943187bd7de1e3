#include "lib/mbuf.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace zelta {

namespace {

size_t data_size(const mbuf *b) {
    return size_t{b->unitsize} * b->capacity;
}

bool size_fits(uint32_t unitsize, uint32_t capacity) {
    return uint64_t{unitsize} * capacity <= guard_max_size;
}

char *make_storage(uint32_t unitsize, uint32_t capacity, uint32_t tag) {
    if (capacity >= MBUF_MAX_CAPACITY || !size_fits(unitsize, capacity))
        return nullptr;
    return guard_alloc(size_t{unitsize} * capacity, tag);
}

} // namespace

int mbuf_valid(mbuf *b) {
    if (b == nullptr || b->magic - MBUF_MAGIC_HEAP >= std::size(_mbuf_kinds) ||
        b->capacity < b->used)
        return -1;
    if (b->unitsize == 0 || !size_fits(b->unitsize, b->capacity))
        return -1;
    if (b->bufptr == nullptr) {
        if (!_mbuf_kind(b).owned)
            return -1;
        b->bufptr = make_storage(b->unitsize, b->capacity, b->magic);
        if (b->bufptr == nullptr)
            return -1;
    }
    return !_mbuf_kind(b).guarded || guard_intact(b->bufptr, data_size(b), b->magic) ? 0 : -1;
}

int mbuf_create(mbuf *b, uint32_t unitsize, uint32_t capacity) {
    if (b != nullptr)
        *b = {MBUF_MAGIC_HEAP, unitsize, 0, capacity, nullptr};
    return mbuf_valid(b);
}

mbuf *mbuf_new(uint32_t unitsize, uint32_t capacity) {
    mbuf *b = static_cast<mbuf *>(malloc(sizeof(mbuf)));
    if (mbuf_create(b, unitsize, capacity) == 0)
        return b;
    free(b);
    return nullptr;
}

int mbuf_destroy(mbuf *b) {
    if (mbuf_valid(b) != 0)
        return -1;
    if (_mbuf_kind(b).owned)
        guard_free(b->bufptr, data_size(b));
    else if (_mbuf_kind(b).guarded)
        guard_wipe(b->bufptr, data_size(b));
    *b = {};
    return 0;
}

int mbuf_delete(mbuf **b) {
    if (b == nullptr || mbuf_destroy(*b) != 0)
        return -1;
    free(*b);
    *b = nullptr;
    return 0;
}

uint32_t mbuf_size(mbuf *b) {
    return mbuf_valid(b) == 0 ? b->used : UINT32_MAX;
}

uint32_t mbuf_capacity(mbuf *b) {
    return mbuf_valid(b) == 0 ? b->capacity : UINT32_MAX;
}

int mbuf_updatesize(mbuf *b, uint32_t used) {
    if (mbuf_valid(b) != 0 || !_mbuf_kind(b).resizable || used > b->capacity)
        return -1;
    b->used = used;
    return 0;
}

int mbuf_clear(mbuf *b) {
    if (mbuf_valid(b) != 0)
        return -1;
    memset(b->bufptr, 0, data_size(b));
    b->used = 0;
    return 0;
}

void *_mbuf_init_buffer(void *storage, size_t size, uint32_t tag) {
    return guard_init(storage, size, tag);
}

void _mbuf_expand(mbuf *b, uint32_t need) {
    if (!_mbuf_kind(b).grows || b->capacity >= need)
        return;
    uint32_t capacity = grown_capacity(b->capacity, need, MBUF_MAX_CAPACITY);
    if (capacity == 0 || !size_fits(b->unitsize, capacity))
        return;
    char *grown = guard_grow(b->bufptr, data_size(b), size_t{b->unitsize} * capacity, b->magic);
    if (grown == nullptr)
        return;
    b->capacity = capacity;
    b->bufptr = grown;
}

int _mbuf_debug_show(const mbuf *b) {
    if (b == nullptr)
        return puts("mbuf: NULL pointer!");
    printf("mbuf: 0x%08" PRIXPTR "\n", reinterpret_cast<uintptr_t>(b));
    printf("  magic: 0x%08" PRIX32 "\n", b->magic);
    printf("  unitsize: %" PRIu32 "\n", b->unitsize);
    printf("  used: %" PRIu32 " (%" PRIu64 ")\n", b->used, uint64_t{b->used} * b->unitsize);
    printf("  capacity: %" PRIu32 " (%" PRIu64 ")\n", b->capacity,
           uint64_t{b->capacity} * b->unitsize);
    return printf("  bufptr: 0x%08" PRIXPTR "\n", reinterpret_cast<uintptr_t>(b->bufptr));
}

} // namespace zelta

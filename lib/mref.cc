#include "lib/mref.h"

#include <cstring>

namespace zelta {

namespace {

bool pair_valid(mref a, mref b) {
    return mref_valid(a) == 0 && mref_valid(b) == 0 && a.ptr != b.ptr && a.len == b.len;
}

} // namespace

mref mk_mref(void *ptr, uint32_t len) {
    return {.ptr = ptr, .len = len};
}

int mref_valid(mref r) {
    return r.ptr != nullptr && r.len != 0 ? 0 : -1;
}

int mref_isnull(mref r) {
    return r.ptr == nullptr && r.len == 0 ? 1 : 0;
}

int mref_memset(mref r, int value) {
    if (mref_valid(r) != 0)
        return -1;
    memset(r.ptr, value, r.len);
    return 0;
}

int mref_memcpy(mref to, mref from) {
    if (!pair_valid(to, from))
        return -1;
    memmove(to.ptr, from.ptr, to.len);
    return 0;
}

int mref_memcmp(mref a, mref b) {
    return pair_valid(a, b) ? memcmp(a.ptr, b.ptr, a.len) : -1;
}

} // namespace zelta

// Memory references: a piece of memory named by its start and length, passed by value. Above all
// the unit arrays (lib/mbuf.h) take and give their units through them.

#pragma once

#include <cstdint>

namespace zelta {

struct mref {
    void *ptr;
    uint32_t len; // bytes; a count of units where an operation of lib/mbuf.h says so
};

// Neither pointer nor length.
inline constexpr mref mref_null = {.ptr = nullptr, .len = 0};

mref mk_mref(void *ptr, uint32_t len);

// 0 when neither pointer nor length is zero, else -1.
int mref_valid(mref r);

// 1 when both are zero, else 0. A reference with only one of them zero is neither null nor valid.
int mref_isnull(mref r);

// Fills all bytes with the value, taken as a byte: 0, or -1 for a reference that is not valid.
int mref_memset(mref r, int value);

// Copies or compares two different memories of the same length, which may overlap. -1, and nothing
// touched, when either reference is not valid, both start at the same address or the lengths
// differ; a comparison gives otherwise what memcmp(3) does, which can be -1 too.
int mref_memcpy(mref to, mref from);
int mref_memcmp(mref a, mref b);

} // namespace zelta

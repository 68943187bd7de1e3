#include "lib/mbuf.h"

#include <cstring>
#include <utility>

namespace zelta {

namespace {

// Where the compiler knows the unit size, moving a unit takes a few instructions. Size 0 stands for
// every other size, which is known only at run time.
template <size_t Size>
void move_unit(char *to, const char *from, size_t size) {
    memcpy(to, from, Size == 0 ? size : Size);
}

// Swaps units by way of a buffer on the stack; a unit larger than the buffer is swapped in parts.
template <size_t Size>
void reverse_units(mbuf *b) {
    char scratch[Size == 0 ? 256 : Size];
    const size_t size = Size == 0 ? b->unitsize : Size;
    char *front = static_cast<char *>(b->bufptr), *back = front + size * (b->used - 1);
    for (; front < back; front += size, back -= size) {
        for (size_t done = 0; done < size; done += sizeof scratch) {
            size_t left = size - done;
            size_t part = left < sizeof scratch ? left : sizeof scratch;
            move_unit<Size>(scratch, front + done, part);
            move_unit<Size>(front + done, back + done, part);
            move_unit<Size>(back + done, scratch, part);
        }
    }
}

// Where the run that starts here ends.
const char *run_end(const char *at, size_t width, const char *stop) {
    const size_t left = static_cast<size_t>(stop - at);
    return at + (width < left ? width : left);
}

template <size_t Size>
char *copy_units(char *to, const char *from, const char *end, size_t step) {
    for (; from != end; from += step, to += step)
        move_unit<Size>(to, from, step);
    return to;
}

// Merges the runs [left, right) and [right, end) into the target; of equal units the left one comes
// first. order is the comparison of their first units, which the caller has made already.
template <size_t Size>
void merge_runs(char *to, const char *left, const char *right, const char *end, size_t step,
                int order, mbuf_cmp_fn compare) {
    const char *middle = right;
    while (true) {
        // Arithmetic in place of a branch: the processor could not predict its outcome.
        const size_t take_right = order > 0;
        move_unit<Size>(to, take_right != 0 ? right : left, step);
        right += step * take_right;
        left += step * (1 - take_right);
        to += step;
        if (left == middle || right == end)
            break;
        order = compare(left, right);
    }
    to = copy_units<Size>(to, left, middle, step);
    copy_units<Size>(to, right, end, step);
}

// Merges pairs of runs into the target and returns true. Returns false, and writes nothing, when
// all units are in order already.
template <size_t Size>
bool _mbuf_mergeLoop(const char *from, char *to, size_t size, size_t width, size_t step,
                     mbuf_cmp_fn compare) {
    const char *left = from, *const stop = from + size;
    bool moved = false;
    while (left != stop) {
        const char *middle = run_end(left, width, stop), *end = run_end(middle, width, stop);
        int order = 0;
        while (left != middle && middle != end) {
            order = compare(left, middle);
            if (moved || order > 0)
                break;
            left += step;
        }
        if (!moved && order > 0)
            memcpy(to, from, static_cast<size_t>(left - from));
        moved = moved || order > 0;
        if (moved && middle == end)
            copy_units<Size>(to + (left - from), left, end, step);
        else if (moved)
            merge_runs<Size>(to + (left - from), left, middle, end, step, order, compare);
        left = end;
    }
    return moved;
}

template <size_t Size>
void merge_sort(mbuf *b, mbuf *scratch, mbuf_cmp_fn compare) {
    const size_t step = Size == 0 ? b->unitsize : Size, size = step * b->used;
    char *from = static_cast<char *>(b->bufptr), *to = static_cast<char *>(scratch->bufptr);
    for (uint64_t width = step; width < size; width *= 2)
        if (_mbuf_mergeLoop<Size>(from, to, size, static_cast<size_t>(width), step, compare))
            std::swap(from, to);
    if (from != b->bufptr)
        memcpy(b->bufptr, from, size);
}

// What differs with the unit size.
struct unit_operations {
    uint32_t unitsize;
    void (*reverse)(mbuf *b);
    void (*sort)(mbuf *b, mbuf *scratch, mbuf_cmp_fn compare);
};

template <size_t Size>
constexpr unit_operations operations_for = {
    .unitsize = Size, .reverse = reverse_units<Size>, .sort = merge_sort<Size>};

// The sizes worth knowing: integers, pointers, and small records.
constexpr unit_operations known_sizes[] = {operations_for<4>, operations_for<8>, operations_for<16>,
                                           operations_for<64>};

const unit_operations &operations_of(const mbuf *b) {
    for (const unit_operations &known : known_sizes)
        if (known.unitsize == b->unitsize)
            return known;
    return operations_for<0>;
}

} // namespace

int mbuf_reverse(mbuf *b) {
    if (mbuf_valid(b) != 0)
        return -1;
    if (b->used > 1)
        operations_of(b).reverse(b);
    return 0;
}

int mbuf_sort(mbuf *b, mbuf_cmp_fn compare) {
    mbuf scratch;
    if (mbuf_valid(b) != 0 || compare == nullptr ||
        mbuf_create(&scratch, b->unitsize, b->used) != 0)
        return -1;
    operations_of(b).sort(b, &scratch, compare);
    return mbuf_destroy(&scratch);
}

} // namespace zelta

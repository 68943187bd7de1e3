// String operations on four strings of all kinds, against std::string and a number for the
// capacity.

#include <algorithm>
#include <cstring>
#include <memory>

#include "fuzz/operation.h"
#include "fuzz/target.h"
#include "lib/mstr.h"

using namespace zelta;
using namespace zelta::fuzz;

namespace {

constexpr uint32_t kinds[] = {MSTR_MAGIC_HEAP, MSTR_MAGIC_GUARDED, MSTR_MAGIC_ARRAY,
                              MSTR_MAGIC_CSTR, MSTR_MAGIC_CONST};

struct slot {
    mstr s = {};
    // Caller's storage, of exactly its size and on the heap, so that AddressSanitizer sees an
    // overrun.
    std::unique_ptr<char[]> storage = {};
    void *damaged = nullptr; // the word that makes the string invalid
    // The model.
    uint32_t kind = 0; // 0: no string
    uint32_t capacity = 0;
    std::string text = {};
};

bool guarded(const slot &x) {
    return x.kind == MSTR_MAGIC_HEAP || x.kind == MSTR_MAGIC_GUARDED;
}

using operands = operands_of<slot>;

size_t length_of(const slot &x) {
    return x.text.size();
}

// --- the model ---

bool valid(const slot &x) {
    return x.kind != 0 && x.damaged == nullptr;
}

bool writable(const slot &x) {
    return valid(x) && x.kind != MSTR_MAGIC_CONST;
}

bool differ(const slot &x, const slot &y) {
    return &x != &y && valid(x) && valid(y);
}

bool room_for(slot &x, uint64_t need) {
    const uint64_t grown = std::max(need, uint64_t{x.capacity} * 2);
    if (x.kind == MSTR_MAGIC_HEAP && x.capacity < need && grown < MSTR_MAX_CAPACITY)
        x.capacity = static_cast<uint32_t>(grown);
    return x.capacity >= need;
}

int store(slot &x, const std::string &text) {
    if (!writable(x) || !room_for(x, text.size()))
        return -1;
    x.text = text;
    return 0;
}

int assign(operands &o, size_t start, size_t end) {
    if (!differ(o.a, o.b) || start > end || end > o.b.text.size())
        return -1;
    return store(o.a, o.b.text.substr(start, end - start));
}

int insert(operands &o, size_t position) {
    if (!differ(o.a, o.b) || position > o.a.text.size())
        return -1;
    return store(o.a, std::string(o.a.text).insert(position, o.b.text));
}

int erase(slot &x, size_t start, size_t end) {
    if (!valid(x) || start > end || end > x.text.size())
        return -1;
    return store(x, std::string(x.text).erase(start, end - start));
}

int trim(slot &x, uint64_t left, uint64_t right) {
    if (left + right > x.text.size())
        return -1;
    const size_t kept = static_cast<size_t>(x.text.size() - left - right);
    return store(x, x.text.substr(static_cast<size_t>(left), kept));
}

int strip(slot &x, bool left, bool right) {
    constexpr char space[] = " \t\n\v\f\r";
    std::string text = x.text;
    if (left)
        text.erase(0, text.find_first_not_of(space));
    if (right)
        text.erase(text.find_last_not_of(space) + 1);
    const int removed = static_cast<int>(x.text.size() - text.size());
    return store(x, text) == 0 ? removed : -1;
}

int find(const slot &x, size_t start, const std::string &needle) {
    if (!valid(x) || needle.empty())
        return -1;
    return static_cast<int>(x.text.find(needle, start)); // npos is -1
}

int count(operands &o) {
    if (!differ(o.a, o.b))
        return -1;
    int matches = 0;
    for (int at = find(o.a, 0, o.b.text); at >= 0; matches++)
        at = find(o.a, static_cast<size_t>(at) + o.b.text.size(), o.b.text);
    return matches;
}

int replace(operands &o) {
    if (!differ(o.a, o.b) || !differ(o.a, o.c) || !differ(o.b, o.c) || !writable(o.a))
        return -1;
    int replaced = 0;
    for (int at = find(o.a, 0, o.b.text); at >= 0;) {
        const size_t start = static_cast<size_t>(at);
        o.a.text.erase(start, o.b.text.size());
        if (store(o.a, std::string(o.a.text).insert(start, o.c.text)) != 0)
            return -1;
        replaced++;
        at = static_cast<uint32_t>(replaced) == o.m ? -1
                                                    : find(o.a, start + o.c.text.size(), o.b.text);
    }
    return replaced;
}

int partition(slot &head, slot &source, const std::string &separator) {
    if (!differ(head, source) || !writable(head) || !writable(source))
        return -1;
    const int at = find(source, 0, separator);
    const std::string text = source.text;
    if (store(head, text.substr(0, static_cast<size_t>(at))) != 0)
        return -1;
    source.text = at < 0 ? "" : text.substr(static_cast<size_t>(at) + separator.size());
    return at < 0 ? 0 : 1;
}

int compare(operands &o) {
    if (!differ(o.a, o.b))
        return -2;
    const int order = o.a.text.compare(o.b.text);
    return (order > 0) - (order < 0);
}

int reserve(slot &x, uint64_t need) {
    return valid(x) && x.kind == MSTR_MAGIC_HEAP && room_for(x, need) ? 0 : -1;
}

int format(operands &o) {
    const std::string whole = std::to_string(o.m) + "=" + o.text;
    if (!writable(o.a))
        return -1;
    room_for(o.a, whole.size());
    o.a.text = whole.substr(0, o.a.capacity);
    return static_cast<int>(whole.size());
}

int read_record(operands &o, char delimiter) {
    if (store(o.a, "") != 0)
        return -1;
    std::string record;
    int result = -1;
    while (result < 0) {
        if (!room_for(o.a, record.size() + 1))
            result = 1;
        else if (record.size() == o.raw.size())
            result = 2;
        else
            record += o.raw[record.size()];
        if (result < 0 && record.back() == delimiter)
            result = 0;
    }
    o.a.text = up_to_nul(record);
    return result;
}

// --- what is compared ---

struct row {
    char letter;
    int (*model)(operands &o);
    int (*call)(operands &o);
};

#define ROW(letter, model, call)                                                                   \
    {                                                                                              \
        letter, []([[maybe_unused]] operands &o) -> int { return model; },                         \
            []([[maybe_unused]] operands &o) -> int { return call; }                               \
    }

int call_getdelim(operands &o, char delimiter) {
    FILE *stream = fmemopen(const_cast<char *>(o.raw.data()), o.raw.size(), "r");
    const int result =
        delimiter == '\n' ? mstr_getline(&o.a.s, stream) : mstr_getdelim(&o.a.s, stream, delimiter);
    fclose(stream);
    return result;
}

// Every text that lies in the string which is written is refused.
int call_with_own_text(operands &o) {
    const char *own = o.a.s.c_str == nullptr ? nullptr : o.a.s.c_str + o.m % (o.a.capacity + 1);
    return std::max({mstr_strcpy(&o.a.s, own), mstr_strcat(&o.a.s, own),
                     mstr_partition_cstr(&o.a.s, &o.b.s, own),
                     mstr_partition_cstr(&o.b.s, &o.a.s, own)});
}

int call_new(operands &o) {
    mstr *fresh = mstr_new(o.n);
    return mstr_delete(&fresh);
}

constexpr row rows[] = {
    ROW('a', assign(o, 0, o.b.text.size()), mstr_assign(&o.a.s, &o.b.s)),
    ROW('+', insert(o, o.a.text.size()), mstr_append(&o.a.s, &o.b.s)),
    ROW('i', insert(o, o.m), mstr_insert(&o.a.s, o.m, &o.b.s)),
    ROW('s', assign(o, o.m, o.n), mstr_slice(&o.a.s, &o.b.s, o.m, o.n)),
    ROW('=', store(o.a, o.text), mstr_strcpy(&o.a.s, o.text)),
    ROW('&', store(o.a, o.a.text + o.text), mstr_strcat(&o.a.s, o.text)),
    ROW('o', -1, call_with_own_text(o)),
    ROW('e', erase(o.a, o.m, o.n), mstr_erase(&o.a.s, o.m, o.n)),
    ROW('t', trim(o.a, o.m, o.n), mstr_trim(&o.a.s, o.m, o.n)),
    ROW('w', strip(o.a, o.m % 2 != 0, o.n % 2 != 0),
        mstr_strip(&o.a.s, o.m % 2 != 0, o.n % 2 != 0)),
    ROW('r', replace(o), mstr_replace(&o.a.s, &o.b.s, &o.c.s, o.m)),
    ROW('R', reserve(o.a, o.n), mstr_reserve(&o.a.s, o.n)),
    ROW('E', reserve(o.a, uint64_t{o.n} + o.a.text.size()), mstr_extend(&o.a.s, o.n)),
    ROW('f', differ(o.a, o.b) ? find(o.a, o.m, o.b.text) : -1, mstr_find(&o.a.s, o.m, &o.b.s)),
    ROW('F', find(o.a, o.m, o.text), mstr_find_cstr(&o.a.s, o.m, o.text)),
    ROW('c', count(o), mstr_count(&o.a.s, &o.b.s)),
    ROW('p', differ(o.a, o.c) && differ(o.b, o.c) ? partition(o.a, o.b, o.c.text) : -1,
        mstr_partition(&o.a.s, &o.b.s, &o.c.s)),
    ROW('P', partition(o.a, o.b, o.text), mstr_partition_cstr(&o.a.s, &o.b.s, o.text)),
    ROW('<', compare(o), mstr_compare(&o.a.s, &o.b.s)),
    ROW('%', format(o), mstr_sprintf(&o.a.s, "%u=%s", o.m, o.text)),
    ROW('g', read_record(o, static_cast<char>(o.m + '0')),
        call_getdelim(o, static_cast<char>(o.m + '0'))),
    ROW('l', read_record(o, '\n'), call_getdelim(o, '\n')),
    ROW('G', valid(o.a) ? 0 : -1, mstr_get(&o.a.s) != nullptr ? 0 : -1),
    ROW('L', valid(o.a) ? static_cast<int>(o.a.text.size()) : -1, mstr_length(&o.a.s)),
    ROW('C', valid(o.a) ? static_cast<int>(o.a.capacity) : -1,
        static_cast<int>(mstr_capacity(&o.a.s))),
    ROW('z', store(o.a, ""), mstr_clear(&o.a.s)),
    ROW('N', o.n < MSTR_MAX_CAPACITY ? 0 : -1, call_new(o)),
};

// Looks at the string without an operation, since each refreshes what a later one may rely on.
void check(const slot &x, std::string_view line) {
    if (x.kind == 0) {
        require(x.s.magic == 0 && x.s.c_str == nullptr, line);
        return;
    }
    if (x.s.c_str == nullptr) {
        require(x.text.empty(), line);
        return;
    }
    const size_t size = size_t{x.capacity} + 1;
    require(strnlen(x.s.c_str, size) == x.text.size() && x.s.c_str == x.text, line);
    require(x.s.capacity == x.capacity || x.kind == MSTR_MAGIC_CONST, line);
    if (x.damaged == nullptr)
        require(x.s.lastlen <= x.s.capacity &&
                    (!guarded(x) || guard_intact(x.s.c_str, size, x.kind)),
                line);
}

// --- life ---

void destroy(slot &x, std::string_view line) {
    const bool was_valid = valid(x);
    require(mstr_destroy(&x.s) == (was_valid ? 0 : -1), line);
    if (!was_valid)
        return;
    if (x.kind == MSTR_MAGIC_GUARDED)
        require(std::string(mstr_storage(x.capacity), '\0') ==
                    std::string_view(x.storage.get(), mstr_storage(x.capacity)),
                line);
    else if (x.storage != nullptr)
        require(x.text == x.storage.get(), line);
    x = {};
}

// Damages a word of the string, or mends the one that was damaged.
void damage_or_mend(slot &x, uint32_t which) {
    if (x.kind == 0)
        return;
    if (x.damaged != nullptr) {
        flip_word(x.damaged);
        x.damaged = nullptr;
        return;
    }
    void *words[] = {&x.s.magic, &x.s.lastlen, &x.s.magic, &x.s.lastlen};
    if (guarded(x) && x.s.c_str != nullptr) {
        words[2] = x.s.c_str - guard_size;
        words[3] = x.s.c_str + x.capacity + 1;
    }
    x.damaged = words[which % std::size(words)];
    flip_word(x.damaged);
}

// The storage is made now, or by the first operation.
void make_heap(slot &x, uint32_t capacity, bool now, std::string_view line) {
    const bool possible = capacity < MSTR_MAX_CAPACITY;
    x.s = {.magic = MSTR_MAGIC_HEAP, .capacity = capacity, .c_str = nullptr};
    if (now || !possible)
        require((now ? mstr_create(&x.s, capacity) : mstr_valid(&x.s)) == (possible ? 0 : -1),
                line);
    x.kind = MSTR_MAGIC_HEAP;
    x.capacity = capacity;
    if (!possible)
        x = {};
}

void make_in_storage(slot &x, const char *text, std::string_view line) {
    const size_t size =
        x.kind == MSTR_MAGIC_GUARDED ? mstr_storage(x.capacity) : size_t{x.capacity} + 1;
    x.storage = std::make_unique<char[]>(size);
    x.s = {.magic = x.kind, .capacity = x.capacity, .c_str = x.storage.get()};
    if (x.kind == MSTR_MAGIC_GUARDED) {
        x.s.c_str = _mstr_init_data(x.storage.get(), x.capacity, x.kind);
        return;
    }
    if (x.kind == MSTR_MAGIC_CONST)
        x.s.capacity = 0;
    if (x.kind != MSTR_MAGIC_ARRAY)
        x.text = text;
    memcpy(x.s.c_str, x.text.c_str(), x.text.size() + 1);
    if (x.kind != MSTR_MAGIC_CONST)
        require(_mstr_init_buffer(x.s.c_str, size) == x.s.c_str, line);
}

// Makes a string anew: of the kind m, with room for n characters or, where it wraps one, the text.
void make(operands &o, std::string_view line) {
    slot &x = o.a;
    if (x.damaged != nullptr)
        damage_or_mend(x, 0);
    destroy(x, line);
    const uint32_t kind = kinds[o.m % std::size(kinds)];
    if (kind == MSTR_MAGIC_HEAP)
        return make_heap(x, o.n, o.m != 0, line);
    x.kind = kind;
    const bool wraps = kind == MSTR_MAGIC_CSTR || kind == MSTR_MAGIC_CONST;
    x.capacity = wraps ? static_cast<uint32_t>(strlen(o.text)) : o.n % 256;
    make_in_storage(x, o.text, line);
}

// As a user does who writes to the characters: shortens the text, or lengthens it by one.
void change_in_place(operands &o) {
    slot &x = o.a;
    if (!writable(x) || x.s.c_str == nullptr)
        return;
    if (o.m < x.text.size())
        x.text.resize(o.m);
    else if (x.text.size() < x.capacity)
        x.text.push_back('k');
    memcpy(x.s.c_str, x.text.c_str(), x.text.size() + 1);
}

void step(operands &o, const operation &operation) {
    switch (operation.letter) {
    case 'n':
        return make(o, operation.line);
    case 'x':
        return destroy(o.a, operation.line);
    case '!':
        return damage_or_mend(o.a, o.m);
    case 'k':
        return change_in_place(o);
    default:
        for (const row &each : rows)
            if (each.letter == operation.letter)
                require(each.model(o) == each.call(o), operation.line);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    do_operations<slot, 4>(as_text(data, size));
    return 0;
}

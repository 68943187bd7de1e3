// The model of strings.

#include "tests/model.h"

#include "lib/mstr.h"

using namespace zelta;
using namespace zelta::test;

using strings = operands<mstr>;

template <>
struct zelta::test::family<mstr> {
    static constexpr uint32_t first = MSTR_MAGIC_HEAP, guarded = MSTR_MAGIC_GUARDED, constant = MSTR_MAGIC_CONST,
                              kinds = 5, limit = MSTR_MAX_CAPACITY, terminator = 1;
    static constexpr auto valid = mstr_valid, destroy = mstr_destroy, clear = mstr_clear, measure = mstr_length;
    static constexpr auto reserve = mstr_reserve, extend = mstr_extend;
    static constexpr auto assign = mstr_assign, append = mstr_append, compare = mstr_compare;
    static constexpr auto insert = mstr_insert;
    static constexpr auto slice = mstr_slice;
    static constexpr auto erase = mstr_erase;
    static constexpr auto destroy_new = mstr_delete;
    static constexpr auto room = mstr_capacity;
    static int create(slot<mstr> &x) { return mstr_create(&x.header, x.capacity); }
    static int possible(const strings &o) { return o.n < limit ? 0 : -1; }
    static mstr *fresh(const strings &o) { return mstr_new(o.n); }
    static char *data(const mstr &s) { return s.c_str; }
    static uint32_t &length(mstr &s) { return s.lastlen; }
    static uint32_t unitsize(const strings &) { return 1; }
    // What the caller's memory holds at first: it is wrapped, or is longer than the text.
    static void fill(strings &o) {
        if (o.a.kind == MSTR_MAGIC_CSTR || o.a.kind == constant)
            o.a.capacity = static_cast<uint32_t>(strlen(o.text));
        if (!o.a.framed())
            o.a.content = std::string(o.text).substr(0, o.a.capacity);
    }
    static void set_up(slot<mstr> &x, char *storage) {
        x.header = {.magic = x.kind, .capacity = x.kind == constant ? 0 : x.capacity, .c_str = storage};
        if (x.kind == guarded)
            x.header = mstr_guarded(storage, x.capacity);
        else if (storage != nullptr && x.kind != constant)
            require(_mstr_init_buffer(storage, x.size()) == storage, "the buffer");
    }
};

namespace {

bool differ(const slot<mstr> &x, const slot<mstr> &y) { return &x != &y && x.valid() && y.valid(); }

int trim(slot<mstr> &x, uint64_t left, uint64_t right) {
    if (left + right > x.units())
        return -1;
    return x.assign(x.part(static_cast<size_t>(left), static_cast<size_t>(x.units() - right)));
}

int strip(slot<mstr> &x, bool left, bool right) {
    constexpr char space[] = " \t\n\v\f\r";
    std::string text = x.content;
    if (left)
        text.erase(0, text.find_first_not_of(space));
    if (right)
        text.erase(text.find_last_not_of(space) + 1);
    const int removed = static_cast<int>(x.units() - text.size());
    return x.assign(text) == 0 ? removed : -1;
}

int find(const slot<mstr> &x, size_t start, const std::string &needle) {
    return x.valid() && !needle.empty() ? static_cast<int>(x.content.find(needle, start)) : -1; // npos is -1
}

int count(strings &o) {
    if (!differ(o.a, o.b))
        return -1;
    int matches = 0;
    for (int at = find(o.a, 0, o.b.content); at >= 0; matches++)
        at = find(o.a, static_cast<size_t>(at) + o.b.units(), o.b.content);
    return matches;
}

int replace(strings &o) {
    if (!differ(o.a, o.b) || !differ(o.a, o.c) || !differ(o.b, o.c) || !o.a.writable())
        return -1;
    int replaced = 0;
    for (int at = find(o.a, 0, o.b.content); at >= 0 && (o.m == 0 || static_cast<uint32_t>(replaced) < o.m);
         replaced++) {
        const size_t start = static_cast<size_t>(at);
        o.a.content.erase(start, o.b.units());
        if (o.a.replace(start, start, o.c.content) != 0)
            return -1;
        at = find(o.a, start + o.c.units(), o.b.content);
    }
    return replaced;
}

int partition(slot<mstr> &head, slot<mstr> &source, const std::string &separator) {
    if (!differ(head, source) || !source.writable())
        return -1;
    const int at = find(source, 0, separator);
    const std::string text = source.content;
    if (head.assign(text.substr(0, static_cast<size_t>(at))) != 0)
        return -1;
    source.content = at < 0 ? "" : text.substr(static_cast<size_t>(at) + separator.size());
    return at < 0 ? 0 : 1;
}

int format(strings &o) {
    const std::string whole = std::to_string(o.m) + "=" + o.text;
    if (!o.a.writable())
        return -1;
    o.a.grow(whole.size());
    o.a.content = whole.substr(0, o.a.capacity);
    return static_cast<int>(whole.size());
}

int read_record(strings &o, char delimiter) {
    if (o.a.assign("") != 0)
        return -1;
    std::string record;
    for (char c : o.raw) {
        if (!o.a.grow(record.size() + 1))
            break;
        record += c;
        if (c == delimiter)
            break;
    }
    o.expected = record;
    o.a.content = record.c_str();
    if (!record.empty() && record.back() == delimiter)
        return 0;
    return o.a.grow(record.size() + 1) ? 2 : 1;
}

int call_getdelim(strings &o, char delimiter) {
    FILE *stream = fmemopen(o.raw.data(), o.raw.size(), "r");
    mstr &s = o.a.header;
    const int result = delimiter == '\n' ? mstr_getline(&s, stream) : mstr_getdelim(&s, stream, delimiter);
    if (result >= 0) {
        o.given.assign(s.c_str, s.lastlen);
        require(ftell(stream) == static_cast<long>(s.lastlen), "bytes are read and not kept");
        require(zeros(s.c_str + s.lastlen, s.capacity - s.lastlen), "bytes are left behind the record");
    }
    fclose(stream);
    return result;
}

// A text or format that lies in the string which is written, and a null one, are refused; so are
// characters that have no multibyte form.
int call_with_refused_text(strings &o) {
    mstr &s = o.a.header, &other = o.b.header;
    const auto any_format = mstr_sprintf; // without its attribute
    int result = std::max({mstr_find_cstr(&s, 0, nullptr), any_format(&s, "xy%ls", L"\xd800")});
    for (const char *own :
         {s.c_str == nullptr ? nullptr : s.c_str + o.m % (o.a.capacity + 1), static_cast<char *>(nullptr)})
        result = std::max({result, mstr_strcpy(&s, own), mstr_strcat(&s, own), mstr_partition_cstr(&s, &other, own),
                           mstr_partition_cstr(&other, &s, own), own == nullptr ? -1 : any_format(&s, own)});
    return result;
}

// As a user does who writes to the characters: shortens the text, or lengthens it by one.
int change_in_place(strings &o) {
    slot<mstr> &x = o.a;
    if (!x.writable() || x.data() == nullptr)
        return 0;
    if (o.m < x.units())
        x.content.resize(o.m);
    else if (x.units() < x.capacity)
        x.content.push_back('k');
    memcpy(x.data(), x.content.c_str(), x.units() + 1);
    return 0;
}

constexpr row<mstr> rows[] = {
    ROW('=', o.a.assign(o.text), mstr_strcpy(&o.a.header, o.text)),
    ROW('&', o.a.assign(o.a.content + o.text), mstr_strcat(&o.a.header, o.text)),
    ROW('o', -1, call_with_refused_text(o)),
    ROW('O', (o.a.assign(""), -1), mstr_getline(&o.a.header, nullptr)),
    ROW('t', trim(o.a, o.m, o.n), mstr_trim(&o.a.header, o.m, o.n)),
    ROW('w', strip(o.a, o.m % 2 != 0, o.n % 2 != 0), mstr_strip(&o.a.header, o.m % 2 != 0, o.n % 2 != 0)),
    ROW('r', replace(o), mstr_replace(&o.a.header, &o.b.header, &o.c.header, o.m)),
    ROW('f', differ(o.a, o.b) ? find(o.a, o.m, o.b.content) : -1, mstr_find(&o.a.header, o.m, &o.b.header)),
    ROW('F', find(o.a, o.m, o.text), mstr_find_cstr(&o.a.header, o.m, o.text)),
    ROW('c', count(o), mstr_count(&o.a.header, &o.b.header)),
    ROW('p', differ(o.a, o.c) && differ(o.b, o.c) ? partition(o.a, o.b, o.c.content) : -1,
        mstr_partition(&o.a.header, &o.b.header, &o.c.header)),
    ROW('P', partition(o.a, o.b, o.text), mstr_partition_cstr(&o.a.header, &o.b.header, o.text)),
    ROW('%', format(o), mstr_sprintf(&o.a.header, "%u=%s", o.m, o.text)),
    ROW('g', read_record(o, static_cast<char>(o.m + '0')), call_getdelim(o, static_cast<char>(o.m + '0'))),
    ROW('l', read_record(o, '\n'), call_getdelim(o, '\n')),
    ROW('G', o.a.number(0), mstr_get(&o.a.header) != nullptr ? 0 : -1),
    ROW('k', 0, change_in_place(o)),
};

} // namespace

void zelta::fuzz::take(std::string_view input) { do_operations<mstr, 4>(input, rows); }

#include "lib/mstr.h"

#include <cstring>

namespace zelta {

namespace {

// The most bytes that one fgets is given, since read_line fills all of them first.
constexpr uint32_t piece_room = 4096;

// Reads up to and including the next line end, or until the room is full: the number of bytes.
// fgets does not tell that number, and strlen cannot, because zero bytes are data. So the room is
// filled with line ends first. Afterwards the first line end there is the one that was read, or it
// follows the terminator that fgets wrote. The stream must have no error before the call: an error
// after it then means that the line is not whole.
uint32_t read_line(char *at, uint32_t room, FILE *stream) {
    memset(at, '\n', room);
    const bool read = fgets_unlocked(at, static_cast<int>(room) + 1, stream) != nullptr;
    const void *end = memchr(at, '\n', room);
    uint32_t count =
        end == nullptr ? room : static_cast<uint32_t>(static_cast<const char *>(end) - at);
    if (read && (feof_unlocked(stream) != 0 || ferror_unlocked(stream) != 0))
        count--; // the terminator
    else if (read && end != nullptr)
        count++; // the line end
    return count;
}

// The same for any delimiter, byte by byte.
uint32_t read_bytes(char *at, uint32_t room, FILE *stream, char delimiter) {
    uint32_t count = 0;
    for (int c; count < room && (c = getc_unlocked(stream)) != EOF;) {
        at[count++] = static_cast<char>(c);
        if (at[count - 1] == delimiter)
            break;
    }
    return count;
}

} // namespace

int mstr_getdelim(mstr *to, FILE *stream, char delimiter) {
    if (stream == nullptr)
        mstr_clear(to);
    if (stream == nullptr || !_mstr_writable(to))
        return -1;
    int result = 1;
    to->lastlen = 0;
    while (result == 1 &&
           (to->lastlen < to->capacity || _mstr_room(to, to->lastlen + uint64_t{1}))) {
        uint32_t left = to->capacity - to->lastlen, room = left < piece_room ? left : piece_room;
        char *at = to->c_str + to->lastlen;
        uint32_t count = delimiter == '\n' && ferror_unlocked(stream) == 0
                             ? read_line(at, room, stream)
                             : read_bytes(at, room, stream, delimiter);
        to->lastlen += count;
        if (count > 0 && at[count - 1] == delimiter)
            result = 0;
        else if (count < room)
            result = feof(stream) != 0 ? 2 : -1;
    }
    memset(to->c_str + to->lastlen, 0, to->capacity - to->lastlen);
    to->c_str[to->lastlen] = '\0';
    return result;
}

int mstr_getline(mstr *to, FILE *stream) {
    return mstr_getdelim(to, stream, '\n');
}

} // namespace zelta

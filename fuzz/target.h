// What every fuzz target has: the entry, which takes one input, and a way to fail. libFuzzer feeds
// the entry with inputs that it makes up, replay.cc with files and mixtures of their lines.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace zelta::fuzz {

inline std::string_view as_text(const uint8_t *data, size_t size) {
    return {reinterpret_cast<const char *>(data), size};
}

// What a function for NUL-terminated text sees of these bytes.
inline std::string up_to_nul(std::string_view bytes) {
    return std::string(bytes.substr(0, bytes.find('\0')));
}

// Ends the target, with the words that say what is wrong, unless the condition holds.
inline void require(bool holds, std::string_view wrong) {
    if (holds)
        return;
    fprintf(stderr, "Wrong: %.*s\n", static_cast<int>(wrong.size()), wrong.data());
    abort();
}

// Changes four bytes; a second call gives them back what they were.
inline void flip_word(void *word) {
    uint32_t value;
    memcpy(&value, word, sizeof value);
    value ^= UINT32_C(1) << 31;
    memcpy(word, &value, sizeof value);
}

} // namespace zelta::fuzz

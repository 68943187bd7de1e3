// Operation sequences as text: each line is a letter, five operands of one character each, and the
// rest, which is a text. So sequences can be written by hand, and no input is malformed.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zelta::fuzz {

struct operation {
    std::string_view line;
    char letter;
    uint32_t a, b, c, m, n;
    std::string text;
};

// "0" stands for 0, and so on in the order of ASCII; "}" for more than any storage holds, "~" for
// the largest number.
inline uint32_t operand(std::string_view line, size_t position) {
    const char c = position < line.size() ? line[position] : '0';
    if (c == '~')
        return UINT32_MAX;
    return c == '}' ? 1U << 25 : static_cast<uint8_t>(c - '0');
}

// Takes the next line off the input. In the text, "|" stands for a line end.
inline operation next_operation(std::string_view &input) {
    const std::string_view line = input.substr(0, input.find('\n'));
    input.remove_prefix(line.size() < input.size() ? line.size() + 1 : line.size());
    operation next = {.line = line,
                      .letter = line.empty() ? ' ' : line[0],
                      .a = operand(line, 1),
                      .b = operand(line, 2),
                      .c = operand(line, 3),
                      .m = operand(line, 4),
                      .n = operand(line, 5),
                      .text = std::string(line.substr(line.size() < 6 ? line.size() : 6))};
    for (char &c : next.text)
        if (c == '|')
            c = '\n';
    return next;
}

} // namespace zelta::fuzz

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

// What an operation works on: slots, each with an object under test and its model, and numbers and a
// text.
template <typename Slot>
struct operands_of {
    Slot &a, &b, &c;
    uint32_t m, n;
    const std::string &raw;
    const char *text = raw.c_str(); // up to a NUL
};

// Does the operations of an input, and destroys what is left in the slots. A target says for its own
// slots what a step does, how to check one, to mend and to destroy it, and how long its content is.
template <typename Slot, size_t Count>
void do_operations(std::string_view input) {
    // Long sequences and contents take time and show nothing new.
    constexpr int most_operations = 100;
    constexpr size_t most_units = 256;
    Slot slots[Count];
    bool goes_on = true;
    for (int i = 0; i < most_operations && goes_on && !input.empty(); i++) {
        const operation next = next_operation(input);
        operands_of<Slot> o = {.a = slots[next.a % Count],
                               .b = slots[next.b % Count],
                               .c = slots[next.c % Count],
                               .m = next.m,
                               .n = next.n,
                               .raw = next.text};
        step(o, next);
        for (const Slot &x : slots) {
            check(x, next.line);
            goes_on = goes_on && length_of(x) <= most_units;
        }
    }
    for (Slot &x : slots) {
        if (x.damaged != nullptr)
            damage_or_mend(x, 0);
        destroy(x, "the end");
    }
}

} // namespace zelta::fuzz

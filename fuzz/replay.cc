// The main of a target that is built without libFuzzer: feeds it the files of the folders that its
// command line names, and then mixtures of their lines, which are the same every time.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "fuzz/target.h"

namespace {

constexpr int mixtures = 10000;
constexpr unsigned most_lines = 40;

void replay(const std::string &name, const std::string &input) {
    printf("%s\n", name.c_str());
    fflush(stdout); // whatever ends the target, its input is named
    // Of exactly its size and on the heap, so that AddressSanitizer sees reading past the end.
    const std::vector<char> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

// Lines in any order, every second one with a character changed.
std::string mixture(const std::vector<std::string> &lines, std::mt19937 &random) {
    std::string mixed;
    for (size_t left = 1 + random() % most_lines; left > 0; left--) {
        std::string line = lines[random() % lines.size()];
        if (random() % 2 == 0)
            line[random() % line.size()] = static_cast<char>(' ' + random() % ('~' - ' ' + 1));
        mixed += line;
    }
    return mixed;
}

} // namespace

int main(int argc, char *argv[]) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; i++)
        std::copy(std::filesystem::directory_iterator(argv[i]), {}, std::back_inserter(files));
    std::sort(files.begin(), files.end());

    std::vector<std::string> lines;
    for (const auto &path : files) {
        std::ifstream file(path, std::ios::binary);
        std::string text(std::istreambuf_iterator<char>(file), {});
        replay(path, text);
        for (size_t size = 0; !text.empty(); text.erase(0, size)) {
            size = std::min(text.find('\n'), text.size() - 1) + 1;
            lines.push_back(text.substr(0, size));
        }
    }
    zelta::fuzz::require(!lines.empty(), "no input");
    std::mt19937 random; // from its default seed
    for (int i = 1; i <= mixtures; i++)
        replay("mixture " + std::to_string(i), mixture(lines, random));
}

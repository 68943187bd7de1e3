// The main of a target that is built without libFuzzer: feeds it the files, and the files of the
// folders, that its command line names.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/target.h"

namespace {

void replay(const std::filesystem::path &path) {
    printf("%s\n", path.c_str());
    fflush(stdout); // whatever ends the target, its input is named
    std::ifstream file(path, std::ios::binary);
    zelta::fuzz::require(file.is_open(), "the file cannot be read");
    // Of exactly its size and on the heap, so that AddressSanitizer sees reading past the end.
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char *argv[]) {
    size_t replayed = 0;
    for (int i = 1; i < argc; i++) {
        if (!std::filesystem::is_directory(argv[i])) {
            replay(argv[i]);
            replayed++;
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
            replay(entry);
            replayed++;
        }
    }
    zelta::fuzz::require(replayed > 0, "no input");
}

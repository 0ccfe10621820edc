// Feeds every file of the given corpus directories to the fuzz target once,
// so that an ordinary build (no clang, no libFuzzer) replays the corpus as a
// test. A broken invariant aborts, which fails the test.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char *argv[])
{
    std::vector<std::filesystem::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            for (const auto &entry : std::filesystem::directory_iterator(path)) {
                if (entry.is_regular_file())
                    inputs.push_back(entry.path());
            }
        } else {
            inputs.push_back(path);
        }
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR_OR_FILE... (found no input)\n", argv[0]);
        return 2;
    }
    std::sort(inputs.begin(), inputs.end());
    for (const std::filesystem::path &input : inputs) {
        std::ifstream file(input, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", input.c_str());
            return 2;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        // Echoed first, so that a crash names its input.
        std::fprintf(stderr, "%s\n", input.filename().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return 0;
}

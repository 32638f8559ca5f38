#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

/** Runs the harness with each file given as an argument: an error ends the program. */
int main(int count, char** arguments) {
    if (count < 2) {
        std::fprintf(stderr, "usage: %s FILE...\n", arguments[0]);
        return 2;
    }
    for (int i = 1; i < count; ++i) {
        std::ifstream file(arguments[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", arguments[i]);
            return 2;
        }
        // In memory of the exact size, like the fuzzer's.
        std::vector<char> const content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        std::vector<std::uint8_t> const bytes(content.begin(), content.end());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    return 0;
}

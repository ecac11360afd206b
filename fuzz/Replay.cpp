// Feeds every file of the folders (or files) given to the fuzz target's entry
// point once: the seed corpora and the regression inputs, replayed under the
// sanitizers of an ordinary build, without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path given(argv[i]);
        if (std::filesystem::is_directory(given)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(given))
                if (entry.is_regular_file()) files.push_back(entry.path());
        } else {
            files.push_back(given);
        }
    }
    if (files.empty()) {
        std::fprintf(stderr, "no inputs to replay\n");
        return 1;
    }
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("replayed %zu inputs\n", files.size());
    return 0;
}

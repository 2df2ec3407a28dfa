// Runs a fuzz target over the files of a folder: where there is no fuzzer, its seeds are still a test.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int /*argc*/, char** argv) {
    std::vector<std::filesystem::path> files;  // a target may go elsewhere
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::absolute(argv[1]))) {
        files.push_back(entry.path());
    }
    for (const auto& path : files) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    return files.empty() ? 1 : 0;
}

// Runs a fuzz target over the files of folders, and over mutations of them for some seconds: where there is no fuzzer,
// the targets are still tests.
//
//     TARGET [--seconds N] FOLDER...

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> ReadAndRun(const char* folder) {
    std::vector<Bytes> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::absolute(folder))) {
        std::ifstream file(entry.path(), std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
        std::printf("%s\n", entry.path().c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        inputs.push_back(bytes);
    }
    return inputs;
}

/// A few bytes changed, a stretch taken out or doubled, or the tail of another input put on.
Bytes Mutated(const std::vector<Bytes>& inputs, std::mt19937& random) {
    const auto below = [&random](std::size_t end) { return end == 0 ? 0 : random() % end; };
    Bytes bytes = inputs[below(inputs.size())];
    if (bytes.empty()) bytes.push_back(0);
    for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
        const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size()));
        const auto end = at + static_cast<std::ptrdiff_t>(below(static_cast<std::size_t>(bytes.end() - at)));
        constexpr std::uint8_t kEdges[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
        switch (below(6)) {
            case 0: *at = kEdges[below(std::size(kEdges))]; break;
            case 1: *at = static_cast<std::uint8_t>(random()); break;
            case 2: *at = static_cast<std::uint8_t>(*at ^ (1U << below(8))); break;
            case 3: bytes.erase(at, end); break;
            case 4: {
                const Bytes stretch(at, end);
                bytes.insert(at, stretch.begin(), stretch.end());
                break;
            }
            default: {
                const Bytes& other = inputs[below(inputs.size())];
                bytes.erase(at, bytes.end());
                bytes.insert(bytes.end(), other.begin() + static_cast<std::ptrdiff_t>(below(other.size())),
                             other.end());
            }
        }
        if (bytes.empty()) bytes.push_back(0);
    }
    return bytes;
}

/// The input that runs stands in a file, so that one that ends badly is there to see.
long RunMutations(const std::vector<Bytes>& inputs, int seconds, const std::string& last) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::mt19937 random{20261123};
    long runs = 0;
    for (; std::chrono::steady_clock::now() < end; ++runs) {
        const Bytes bytes = Mutated(inputs, random);
        std::ofstream(last, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::filesystem::remove(last);
    return runs;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string last = (std::filesystem::current_path() / "last_input").string();  // a target may go elsewhere
    int seconds = 0;
    std::vector<Bytes> inputs;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view{argv[i]} == "--seconds" && i + 1 < argc) {
            seconds = std::atoi(argv[++i]);
            continue;
        }
        for (Bytes& bytes : ReadAndRun(argv[i])) inputs.push_back(std::move(bytes));
    }
    std::printf("%zu inputs\n", inputs.size());
    if (!inputs.empty() && seconds > 0) std::printf("%ld mutations\n", RunMutations(inputs, seconds, last));
    return inputs.empty() ? 1 : 0;
}

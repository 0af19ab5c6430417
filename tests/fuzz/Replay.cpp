// Stands in for the fuzzer where there is none: gives the harness each kept input once. A fault ends it, by the
// sanitizers or otherwise.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int /*count*/, char** arguments) {
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator{arguments[1]}) {
        std::ifstream file{entry.path(), std::ios::binary};
        const std::string bytes{std::istreambuf_iterator<char>{file}, {}};
        std::puts(entry.path().c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++inputs;
    }
    return inputs > 0 ? 0 : 1;
}

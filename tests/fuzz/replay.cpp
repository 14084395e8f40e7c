// Plays stored inputs through a fuzz target in builds without the fuzzer: replay FOLDER.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        std::fprintf(stderr, "%s\n", file.filename().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::fprintf(stderr, "%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}

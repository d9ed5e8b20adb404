// Feeds files, and all files of folders, to a fuzz target: how its corpus is run without a fuzzer.
#include "fuzz_support.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

using Path = std::filesystem::path;

static std::vector<Path> filesOf(const Path& path) {
    std::vector<Path> files;
    if (!std::filesystem::is_directory(path)) {
        return {path};
    }
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

static void feed(const Path& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const u8*>(bytes.data()), bytes.size());
}

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    u64 count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const Path& file : filesOf(argv[i])) {
            feed(file);
            ++count;
        }
    }
    std::fprintf(stderr, "%llu inputs\n", static_cast<unsigned long long>(count));
    return count > 0 ? 0 : 1;
}

// Start of a fuzz program and its scratch file.
#include "fuzz_support.h"

#include "board/board.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    initBoardTables();
    newGame();
    return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

// In memory where the system has such a folder: a fuzzer writes it thousands of times a second.
static std::string makeScratchName() {
    const std::filesystem::path inMemory = "/dev/shm";
    const std::filesystem::path folder =
        std::filesystem::is_directory(inMemory) ? inMemory : std::filesystem::temp_directory_path();
    std::random_device device;
    return (folder / ("tarvelmon-fuzz-" + std::to_string(device()))).string();
}

struct ScratchFile {
    std::string name = makeScratchName();

    ScratchFile() = default;
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { std::remove(name.c_str()); }
};

const std::string& scratchFile(std::string_view bytes) {
    static const ScratchFile file;
    std::FILE* stream = std::fopen(file.name.c_str(), "wb");
    const bool written = stream != nullptr && (bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(),
                                                                            stream) == bytes.size());
    if (stream == nullptr || std::fclose(stream) != 0 || !written) {
        std::perror(file.name.c_str());
        std::abort();
    }
    return file.name;
}

u8 takeByte(std::string_view& input) {
    if (input.empty()) {
        return 0;
    }
    const u8 byte = static_cast<u8>(input.front());
    input.remove_prefix(1);
    return byte;
}

// Start of a fuzz program and its files in memory.
#include "fuzz_support.h"

#include "frontend/session.h"
#include "frontend/thinking_lines.h"

#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

// The fuzzer keeps the texts for good.
static void makeNamesAbsolute(int argc, char** argv) {
    static std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(argc));
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != '-') {
            names.push_back(std::filesystem::absolute(argv[i]).string());
            argv[i] = names.back().data();
        }
    }
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    makeNamesAbsolute(*argc, *argv);
    newGame();
    thinkingSink = printedThinking;
    return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

static std::filesystem::path makeScratchName() {
    const std::filesystem::path inMemory = "/dev/shm";
    const std::filesystem::path folder =
        std::filesystem::is_directory(inMemory) ? inMemory : std::filesystem::temp_directory_path();
    std::random_device device;
    return folder / ("tarvelmon-fuzz-" + std::to_string(device()));
}

ScratchFolder::ScratchFolder() : path(makeScratchName()) {
    std::filesystem::create_directory(path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

void ScratchFolder::write(const std::string& name, std::string_view bytes) const {
    const std::string file = (path / name).string();
    std::FILE* stream = std::fopen(file.c_str(), "wb");
    const bool written = stream != nullptr && (bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(),
                                                                            stream) == bytes.size());
    if (stream == nullptr || std::fclose(stream) != 0 || !written) {
        std::perror(file.c_str());
        std::abort();
    }
}

const std::string& scratchFile(std::string_view bytes) {
    static const ScratchFolder folder;
    static const std::string name = (folder.path / "input").string();
    folder.write("input", bytes);
    return name;
}

u8 takeByte(std::string_view& input) {
    if (input.empty()) {
        return 0;
    }
    const u8 byte = static_cast<u8>(input.front());
    input.remove_prefix(1);
    return byte;
}

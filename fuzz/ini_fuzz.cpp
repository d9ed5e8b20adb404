// A configuration file: section and key to look for stand in the first two lines, all else is the file.
#include "frontend/config.h"
#include "frontend/ini.h"
#include "fuzz_support.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

static std::string takeLine(std::string_view& input) {
    const std::string line(input.substr(0, input.find('\n')));
    input.remove_prefix(std::min(line.size() + 1, input.size()));
    return line;
}

// Reads the key into buffers of several sizes, each with a byte behind that must stay as it is.
static void readIntoBuffers(const std::string& section, const std::string& key, const char* name) {
    constexpr char guard = '\x5A';
    for (const i32 size : {1, 2, 3, 64, 100, 600}) {
        std::array<char, 601> buffer;
        buffer.fill(guard);
        const i32 length = iniGetString(section.c_str(), key.c_str(), "default", buffer.data(), size, name);
        if (length < 0 || length >= size || buffer[static_cast<u32>(length)] != '\0' ||
            std::strlen(buffer.data()) != static_cast<std::size_t>(length) ||
            buffer[static_cast<u32>(size)] != guard) {
            std::abort();
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    const std::string section = takeLine(input);
    const std::string key = takeLine(input);
    const std::string& name = scratchFile(input);
    readIntoBuffers(section, key, name.c_str());
    const i32 truth = iniGetBool(section.c_str(), key.c_str(), 7, name.c_str());
    if (truth != 0 && truth != 1 && truth != 7) {
        std::abort();
    }
    static_cast<void>(iniGetInt(section.c_str(), key.c_str(), 1, name.c_str()));
    loadConfig(name.c_str());
    printParams();
    return 0;
}

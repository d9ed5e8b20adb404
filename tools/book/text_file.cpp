// Files and messages of the command line.
#include "text_file.h"

#include "platform/platform.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

constexpr i64 fileSizeMax = i64{2} << 30;
constexpr u64 faultsToSay = 20;

static bool sayFileFault(const std::string& fileName, const char* fault) {
    std::fprintf(stderr, "%s: %s\n", fileName.c_str(), fault);
    return false;
}

static bool readOpenFile(std::FILE* file, std::string& bytes) {
    const i64 size = fileSize(file);
    if (size < 0 || size > fileSizeMax) {
        errno = EFBIG;
        return false;
    }
    bytes.resize(static_cast<std::size_t>(size));
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    return std::ferror(file) == 0;
}

bool readFile(const std::string& fileName, std::string& bytes) {
    std::FILE* file = openRegularFile(fileName.c_str());
    if (file == nullptr) {
        return sayFileFault(fileName, std::strerror(errno));
    }
    const bool whole = readOpenFile(file, bytes);
    const i32 error = errno;
    std::fclose(file);
    return whole || sayFileFault(fileName, std::strerror(error));
}

static bool writeNewFile(const std::string& fileName, std::string_view bytes) {
    std::FILE* file = createFile(fileName.c_str());
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
}

static std::filesystem::path pathOf(const std::string& fileName) {
    return std::u8string(fileName.begin(), fileName.end());
}

bool writeFile(const std::string& fileName, std::string_view bytes) {
    const std::string newName = fileName + ".new";
    std::error_code error;
    if (!writeNewFile(newName, bytes)) {
        sayFileFault(newName, std::strerror(errno));
    } else if (std::filesystem::rename(pathOf(newName), pathOf(fileName), error); error) {
        sayFileFault(fileName, error.message().c_str());
    } else {
        return true;
    }
    std::filesystem::remove(pathOf(newName), error);
    return false;
}

void reportFault(FaultLog& log, const std::string& fileName, u64 line, std::string_view text,
                 const char* fault) {
    ++log.count;
    if (log.count <= faultsToSay) {
        std::fprintf(stderr, "%s:%llu: \"%.*s\" %s\n", fileName.c_str(),
                     static_cast<unsigned long long>(line), static_cast<int>(text.size()), text.data(),
                     fault);
    } else if (log.count == faultsToSay + 1) {
        std::fprintf(stderr, "more faults are not shown\n");
    }
}

// The Windows side of platform.h.
#include "platform/platform.h"

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

static bool isRegularFile(const char* path) {
    const DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        errno = ENOENT;
        return false;
    }
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) != 0) {
        errno = EINVAL;
        return false;
    }
    return true;
}

std::FILE* openRegularFile(const char* path) {
    return isRegularFile(path) ? std::fopen(path, "rb") : nullptr;
}

i64 fileSize(std::FILE* file) {
    return _filelengthi64(_fileno(file));
}

bool seekFile(std::FILE* file, i64 offset) {
    return _fseeki64(file, offset, SEEK_SET) == 0;
}

MapResult mapFile(const char* path, MappedFile& file) {
    file = MappedFile{nullptr, 0};
    if (!isRegularFile(path)) {
        return MapResult::cannotOpen;
    }
    const HANDLE handle = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return MapResult::cannotOpen;
    }
    LARGE_INTEGER size{};
    GetFileSizeEx(handle, &size);
    const HANDLE mapping = CreateFileMappingA(handle, nullptr, PAGE_READONLY, 0, 0, nullptr);
    CloseHandle(handle);
    if (mapping == nullptr) {
        return MapResult::cannotMap;
    }
    const void* memory = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
    CloseHandle(mapping);  // the view keeps the mapping alive
    if (memory == nullptr) {
        return MapResult::cannotMap;
    }
    file = MappedFile{static_cast<const u8*>(memory), static_cast<u64>(size.QuadPart)};
    return MapResult::mapped;
}

void unmapFile(MappedFile& file) {
    if (file.data != nullptr) {
        UnmapViewOfFile(file.data);
    }
    file = MappedFile{nullptr, 0};
}

void* allocatePages(std::size_t bytes, bool) {
    return bytes == 0 ? nullptr : VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

// Large pages need a right that accounts do not have, and all of the memory at once.
bool allowLargePages(void*, std::size_t) {
    return false;
}

bool makeLargePage(void*) {
    return false;
}

void freePages(void* memory, std::size_t) {
    if (memory != nullptr) {
        VirtualFree(memory, 0, MEM_RELEASE);
    }
}

// Pages that were given back might not be had again.
void zeroPages(void* memory, std::size_t bytes) {
    std::memset(memory, 0, bytes);
}

void ignoreInterrupts() {
    std::signal(SIGINT, SIG_IGN);
}

void setUpStandardStreams() {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::setvbuf(stdin, nullptr, _IOFBF, BUFSIZ);
}

bool waitedForStream(std::FILE*) {
    return false;
}

bool errorSharesOutput() {
    return GetStdHandle(STD_OUTPUT_HANDLE) == GetStdHandle(STD_ERROR_HANDLE);
}

bool outputIsTerminal() {
    return _isatty(_fileno(stdout)) != 0;
}

void exitNow(i32 status) {
    std::fflush(stdout);
    std::_Exit(status);
}

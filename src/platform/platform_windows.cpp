// The Windows side of platform.h.
#include "platform/platform.h"

#include "platform/wide_windows.h"

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>

double processorSeconds() {
    constexpr double perSecond = 1e7;  // a unit is 100 ns
    FILETIME created{};
    FILETIME ended{};
    FILETIME inSystem{};
    FILETIME inProgram{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &inSystem, &inProgram);
    const auto units = [](const FILETIME& time) {
        return u64{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };
    return static_cast<double>(units(inSystem) + units(inProgram)) / perSecond;
}

// ---- files ----------------------------------------------------------------------------------------------------

// The C library's number for what the system has just refused.
static i32 errorNumber() {
    switch (GetLastError()) {
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return EACCES;
        case ERROR_TOO_MANY_OPEN_FILES:
            return EMFILE;
        case ERROR_NOT_ENOUGH_MEMORY:
            return ENOMEM;
        default:
            return ENOENT;
    }
}

// Others may write, rename and remove the file meanwhile, as anywhere else. A name that leads to a device or a pipe is
// refused only when it is open: the name does not tell.
static HANDLE openRegular(const char* path) {
    const std::wstring widePath = wideOf(path);
    const DWORD attributes = GetFileAttributesW(widePath.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        errno = attributes == INVALID_FILE_ATTRIBUTES ? errorNumber() : EISDIR;
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle =
        CreateFileW(widePath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        errno = errorNumber();
    } else if (GetFileType(handle) != FILE_TYPE_DISK) {
        CloseHandle(handle);
        errno = EINVAL;
        return INVALID_HANDLE_VALUE;
    }
    return handle;
}

std::FILE* openRegularFile(const char* path) {
    const HANDLE handle = openRegular(path);
    if (handle == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    const i32 descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), _O_RDONLY | _O_BINARY);
    if (descriptor < 0) {
        CloseHandle(handle);
        return nullptr;
    }
    std::FILE* file = _fdopen(descriptor, "rb");
    if (file == nullptr) {
        _close(descriptor);
    }
    return file;
}

std::FILE* createFile(const char* path) {
    return _wfopen(wideOf(path).c_str(), L"wb");
}

std::FILE* openForAppending(const char* path) {
    return _wfopen(wideOf(path).c_str(), L"ab");
}

i64 fileSize(std::FILE* file) {
    return _filelengthi64(_fileno(file));
}

bool seekFile(std::FILE* file, i64 offset) {
    return _fseeki64(file, offset, SEEK_SET) == 0;
}

MapResult mapFile(const char* path, MappedFile& file) {
    file = MappedFile{nullptr, 0};
    const HANDLE handle = openRegular(path);
    if (handle == INVALID_HANDLE_VALUE) {
        return MapResult::cannotOpen;
    }
    LARGE_INTEGER size{};
    GetFileSizeEx(handle, &size);
    const HANDLE mapping = CreateFileMappingW(handle, nullptr, PAGE_READONLY, 0, 0, nullptr);
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

// ---- memory ---------------------------------------------------------------------------------------------------

static u64 machineMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

// Large pages are for users whom an administrator has given a right to them: nobody is asked.
void* allocatePages(std::size_t bytes, bool largePages) {
    if (bytes == 0 || bytes > machineMemory()) {
        return nullptr;
    }
    void* memory = VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (memory != nullptr && largePages) {
        std::memset(memory, 0, bytes);
    }
    return memory;
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

// ---- streams --------------------------------------------------------------------------------------------------

void makeStreamsBinary() {
    for (std::FILE* stream : {stdin, stdout, stderr}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
}

void setUpStandardStreams() {
    makeStreamsBinary();
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::setvbuf(stdin, nullptr, _IOFBF, BUFSIZ);
}

// Streams always block here. Elsewhere a signal ends who writes to a pipe that nobody reads. The C library has the
// system's number for that beside its own, which is another one for each.
bool waitedForStream(std::FILE* stream) {
    const unsigned long fault = _doserrno;
    if (stream == stdout &&
        (fault == ERROR_BROKEN_PIPE || fault == ERROR_NO_DATA || fault == ERROR_PIPE_NOT_CONNECTED)) {
        std::_Exit(1);
    }
    return false;
}

// Both may be handles of their own to one pipe. Systems before Windows 10 cannot tell.
static bool areOneObject(HANDLE a, HANDLE b) {
    using Comparison = BOOL(WINAPI*)(HANDLE, HANDLE);
    const HMODULE library = GetModuleHandleW(L"kernelbase.dll");
    const FARPROC found = library != nullptr ? GetProcAddress(library, "CompareObjectHandles") : nullptr;
    return found != nullptr && reinterpret_cast<Comparison>(reinterpret_cast<void*>(found))(a, b) != 0;
}

bool errorSharesOutput() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    return output == error || areOneObject(output, error);
}

bool outputIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

void exitNow(i32 status) {
    std::fflush(stdout);
    std::_Exit(status);
}

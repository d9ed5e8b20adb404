// The POSIX side of platform.h.
#include "platform/platform.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>

double processorSeconds() {
    return static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC);
}

// A pipe without a writer would block the open for ever; without blocking it opens, and is then refused.
static i32 openRegular(const char* path, struct stat& status) {
    const i32 descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return -1;
    }
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        const bool isDirectory = S_ISDIR(status.st_mode);
        close(descriptor);
        errno = isDirectory ? EISDIR : EINVAL;
        return -1;
    }
    return descriptor;
}

std::FILE* openRegularFile(const char* path) {
    struct stat status {};
    const i32 descriptor = openRegular(path, status);
    if (descriptor < 0) {
        return nullptr;
    }
    std::FILE* file = fdopen(descriptor, "rb");
    if (file == nullptr) {
        close(descriptor);
    }
    return file;
}

std::FILE* createFile(const char* path) {
    return std::fopen(path, "wb");
}

std::FILE* openForAppending(const char* path) {
    return std::fopen(path, "ab");
}

i64 fileSize(std::FILE* file) {
    struct stat status {};
    return fstat(fileno(file), &status) == 0 ? i64{status.st_size} : -1;
}

bool seekFile(std::FILE* file, i64 offset) {
    return fseeko(file, off_t{offset}, SEEK_SET) == 0;
}

MapResult mapFile(const char* path, MappedFile& file) {
    file = MappedFile{nullptr, 0};
    struct stat status {};
    const i32 descriptor = openRegular(path, status);
    if (descriptor < 0) {
        return MapResult::cannotOpen;
    }
    const u64 size = static_cast<u64>(status.st_size);
    if (size > SIZE_MAX) {
        close(descriptor);
        return MapResult::cannotMap;
    }
    void* memory = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_SHARED, descriptor, 0);
    close(descriptor);
    if (memory == MAP_FAILED) {
        return MapResult::cannotMap;
    }
    file = MappedFile{static_cast<const u8*>(memory), size};
    return MapResult::mapped;
}

void unmapFile(MappedFile& file) {
    if (file.data != nullptr) {
        munmap(const_cast<u8*>(file.data), static_cast<std::size_t>(file.size));
    }
    file = MappedFile{nullptr, 0};
}

// The system would promise more, and end the process when it is touched.
static u64 machineMemory() {
    return static_cast<u64>(sysconf(_SC_PHYS_PAGES)) * static_cast<u64>(sysconf(_SC_PAGESIZE));
}

void* allocatePages(std::size_t bytes, bool largePages) {
    if (bytes == 0 || bytes > machineMemory()) {
        return nullptr;
    }
    void* memory =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    madvise(memory, bytes, largePages ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
    if (largePages) {
        std::memset(memory, 0, bytes);
    }
    return memory;
}

// MADV_COLLAPSE, which older headers of the C library do not name. Older systems refuse it.
constexpr i32 collapseAdvice = 25;

bool allowLargePages(void* memory, std::size_t bytes) {
    return madvise(memory, bytes, MADV_HUGEPAGE) == 0;
}

bool makeLargePage(void* start) {
    return madvise(start, largePageBytes, collapseAdvice) == 0;
}

void freePages(void* memory, std::size_t bytes) {
    if (memory != nullptr) {
        munmap(memory, bytes);
    }
}

void zeroPages(void* memory, std::size_t bytes) {
    // Locked pages cannot be given back.
    if (madvise(memory, bytes, MADV_DONTNEED) != 0) {
        std::memset(memory, 0, bytes);
    }
}

void ignoreInterrupts() {
    std::signal(SIGINT, SIG_IGN);
}

void makeStreamsBinary() {}

void setUpStandardStreams() {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::setvbuf(stdin, nullptr, _IOFBF, BUFSIZ);
}

bool waitedForStream(std::FILE* stream) {
    if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
        return false;
    }
    std::clearerr(stream);
    pollfd entry{fileno(stream), static_cast<short>(stream == stdin ? POLLIN : POLLOUT), 0};
    poll(&entry, 1, -1);
    return true;
}

bool errorSharesOutput() {
    struct stat output {};
    struct stat error {};
    return fstat(STDOUT_FILENO, &output) == 0 && fstat(STDERR_FILENO, &error) == 0 &&
           output.st_dev == error.st_dev && output.st_ino == error.st_ino;
}

bool outputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

void exitNow(i32 status) {
    std::fflush(stdout);
    _exit(status);
}

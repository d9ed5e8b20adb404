// What differs between operating systems, behind plain functions. One POSIX and one Windows source. Paths are UTF-8 on
// Windows and plain bytes elsewhere.
#pragma once

#include "platform/bits.h"

#include <cstddef>
#include <cstdio>

/// Milliseconds of a monotonic clock in 32 bits: may wrap, only differences count (subtract as unsigned).
[[nodiscard]] i32 nowMs();

/// Milliseconds from `startMs` to now, right across the wrap of nowMs.
[[nodiscard]] inline i32 elapsedMs(i32 startMs) {
    return static_cast<i32>(static_cast<u32>(nowMs()) - static_cast<u32>(startMs));
}

/// Seconds that the processor has worked for this process, all threads together.
[[nodiscard]] double processorSeconds();

/// Opens a regular file for reading bytes, without ever blocking; null with errno set if it cannot be opened or is
/// a directory, a device or a pipe. The caller closes it.
[[nodiscard]] std::FILE* openRegularFile(const char* path);

/// Opens a file for writing bytes, anew or at its end; null with errno set. The caller closes it.
[[nodiscard]] std::FILE* createFile(const char* path);
[[nodiscard]] std::FILE* openForAppending(const char* path);

/// Bytes of an open file, also beyond 4 GB; -1 if it cannot be told.
[[nodiscard]] i64 fileSize(std::FILE* file);
/// Moves to `offset` bytes from the file's start, also beyond 4 GB. Whether that worked.
[[nodiscard]] bool seekFile(std::FILE* file, i64 offset);

/// A whole file mapped for reading.
struct MappedFile {
    const u8* data;  // null if there is none
    u64 size;        // bytes
};
/// How mapFile went.
enum class MapResult : u8 { mapped, cannotOpen, cannotMap };
/// Maps a regular file. An empty file cannot be mapped. Unless it is mapped, `file` is empty.
[[nodiscard]] MapResult mapFile(const char* path, MappedFile& file);
/// Gives the mapping back; `file` is empty afterwards. Nothing happens to an empty one.
void unmapFile(MappedFile& file);

/// Zeroed memory of whole pages, taken from the system only when touched; null if it cannot be had, or is more than
/// the machine has.
/// largePages  worth asking the system for large pages. They come slowly, so that all are taken here and now, while no
///             clock runs.
[[nodiscard]] void* allocatePages(std::size_t bytes, bool largePages);
/// What the system takes for a large page, and where such a page may begin.
constexpr std::size_t largePageBytes = std::size_t{2} << 20;
/// Prepares memory of allocatePages for makeLargePage. Whether the system knows of such pages.
[[nodiscard]] bool allowLargePages(void* memory, std::size_t bytes);
/// Puts largePageBytes at `start`, a multiple of as many, on one page; what they hold stays. Takes some tenths of a
/// millisecond. Whether that could be done.
[[nodiscard]] bool makeLargePage(void* start);
/// Gives back what allocatePages gave, with the same number of bytes. Null is allowed.
void freePages(void* memory, std::size_t bytes);
/// Makes the memory zero again by giving its pages back.
void zeroPages(void* memory, std::size_t bytes);

/// Interfaces send SIGINT before each command: it does nothing from now on.
void ignoreInterrupts();

/// Standard streams take and give bytes: a line ends as it is written.
void makeStreamsBinary();
/// Makes standard output unbuffered, and all three streams binary. Input comes by as much as is there: a line never waits
/// for the next, and the threads that read in turn share what one of them has fetched. Nobody else reads it.
void setUpStandardStreams();
/// For a standard stream that has just failed to read or write. If it only was not ready, because another program has
/// left it in a state in which it does not block: waits until it is, and returns true. Output that nobody can read any
/// more ends the process where the system does not do that by itself.
[[nodiscard]] bool waitedForStream(std::FILE* stream);
/// Whether standard output and standard error lead to the same pipe or file.
[[nodiscard]] bool errorSharesOutput();
/// Whether standard output is a terminal.
[[nodiscard]] bool outputIsTerminal();

/// Writes out what is pending and ends the process at once, without waiting for other threads or running destructors.
[[noreturn]] void exitNow(i32 status);

// Bytes that lie as a mapped file would, at the end of readable memory: a read behind them ends the process in every
// build.
#pragma once

#include "platform/platform.h"

#include <sys/mman.h>
#include <unistd.h>
#include <cstdlib>
#include <cstring>
#include <string_view>

struct GuardedBytes {
    MappedFile file;  // the bytes; not for unmapFile
    u8* pages;
    std::size_t pagesSize;

    explicit GuardedBytes(std::string_view bytes) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t readable = (bytes.size() + page - 1) / page * page;
        pagesSize = readable + page;
        void* memory = mmap(nullptr, pagesSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            std::abort();
        }
        pages = static_cast<u8*>(memory);
        u8* start = pages + readable - bytes.size();
        if (!bytes.empty()) {
            std::memcpy(start, bytes.data(), bytes.size());
        }
        if (mprotect(pages + readable, page, PROT_NONE) != 0) {
            std::abort();
        }
        file = MappedFile{start, bytes.size()};
    }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    ~GuardedBytes() { munmap(pages, pagesSize); }
};

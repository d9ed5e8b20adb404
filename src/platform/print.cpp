// Output by whole lines and input by lines. Each thread builds its own line, so that lines of two threads never mix.
#include "platform/print.h"

#include "platform/platform.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

// A line that a stream takes in pieces stays whole. Not constinit: some systems construct it.
static std::mutex outputMutex;

static thread_local std::string pendingText;
static thread_local const char* linePrefix = "";

static void writeOut(std::size_t length) {
    const std::lock_guard<std::mutex> lock(outputMutex);
    std::size_t written = 0;
    do {
        written += std::fwrite(pendingText.data() + written, 1, length - written, stdout);
    } while (written < length && waitedForStream(stdout));
    std::fflush(stdout);
    pendingText.erase(0, length);
}

static void appendFormatted(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    std::array<char, 512> shortText;
    const i32 length = std::vsnprintf(shortText.data(), shortText.size(), format, arguments);
    if (length >= 0 && static_cast<std::size_t>(length) < shortText.size()) {
        pendingText.append(shortText.data(), static_cast<std::size_t>(length));
    } else if (length >= 0) {
        const std::size_t before = pendingText.size();
        pendingText.resize(before + static_cast<std::size_t>(length) + 1);
        std::vsnprintf(pendingText.data() + before, static_cast<std::size_t>(length) + 1, format, again);
        pendingText.pop_back();
    }
    va_end(again);
}

void setLinePrefix(const char* prefix) {
    linePrefix = prefix;
}

// The first `length` bytes of the pending text, which are whole lines, as the prefix wants them. Returns their length.
static std::size_t decorate(std::size_t length) {
    if (linePrefix == nullptr) {
        pendingText.erase(0, length);
        return 0;
    }
    const std::size_t prefixLength = std::strlen(linePrefix);
    if (prefixLength == 0) {
        return length;
    }
    for (std::size_t start = 0; start < length;) {
        pendingText.insert(start, linePrefix);
        length += prefixLength;
        start = pendingText.find('\n', start) + 1;
    }
    return length;
}

void print(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    appendFormatted(format, arguments);
    va_end(arguments);
    const std::size_t lastNewline = pendingText.rfind('\n');
    if (lastNewline != std::string::npos) {
        const std::size_t length = decorate(lastNewline + 1);
        if (length > 0) {
            writeOut(length);
        }
    }
}

void flushOutput() {
    if (linePrefix == nullptr) {
        pendingText.clear();
    }
    if (!pendingText.empty()) {
        writeOut(pendingText.size());
    }
}

// EOF at the end of input.
static i32 readByte() {
    i32 byte = std::fgetc(stdin);
    while (byte == EOF && std::ferror(stdin) != 0 && waitedForStream(stdin)) {
        byte = std::fgetc(stdin);
    }
    return byte;
}

bool readLine(char (&line)[lineBufferSize]) {
    std::memset(line, 0, sizeof line);
    i32 length = 0;
    while (length < lineBufferSize - 1) {
        const i32 byte = readByte();
        if (byte == EOF) {
            return length > 0;
        }
        if (byte == '\n') {
            if (length > 0 && line[length - 1] == '\r') {
                line[length - 1] = '\0';
            }
            return true;
        }
        line[length++] = static_cast<char>(byte);
    }
    return true;
}

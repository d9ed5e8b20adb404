// Output by whole lines and input by lines. Each thread builds its own line, so that lines of two threads never mix.
#include "platform/print.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

static thread_local std::string pendingText;

static void writeOut(std::size_t length) {
    std::fwrite(pendingText.data(), 1, length, stdout);
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

void print(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    appendFormatted(format, arguments);
    va_end(arguments);
    const std::size_t lastNewline = pendingText.rfind('\n');
    if (lastNewline != std::string::npos) {
        writeOut(lastNewline + 1);
    }
}

void flushOutput() {
    if (!pendingText.empty()) {
        writeOut(pendingText.size());
    }
}

bool readLine(char (&line)[lineBufferSize]) {
    std::memset(line, 0, sizeof line);
    if (std::fgets(line, sizeof line, stdin) == nullptr) {
        return false;
    }
    char* newline = static_cast<char*>(std::memchr(line, '\n', sizeof line));
    if (newline != nullptr) {
        *newline = '\0';
        if (newline != line && newline[-1] == '\r') {
            newline[-1] = '\0';
        }
    }
    return true;
}

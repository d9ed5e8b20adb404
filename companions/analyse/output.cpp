// Lines go out by write, whole, so that who reads along or kills the program never finds half of one in a pipe.
#include "output.h"

#include "platform/platform.h"

#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

constexpr i32 progressPauseMs = 200;

bool writeOut(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && errno == EINTR && caughtSignal() == 0) {
            continue;
        }
        if (written < 0) {
            if (errno != EPIPE && errno != EINTR) {
                std::fprintf(stderr, "tarvelmon-analyse: standard output: %s\n", std::strerror(errno));
            }
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

Progress startProgress(u64 total) {
    return {isatty(STDERR_FILENO) == 1, nowMs(), total, 0, 0, 0};
}

static std::string clockText(i64 seconds) {
    char text[48];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                  static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
    return text;
}

std::string progressText(const Progress& progress, i32 milliseconds) {
    std::string text = std::to_string(progress.done);
    if (progress.total > 0) {
        text += " of " + std::to_string(progress.total);
    }
    const double seconds = std::max(1, milliseconds) / 1000.0;
    const double rate = static_cast<double>(progress.searched) / seconds;
    char rateText[48];
    std::snprintf(rateText, sizeof rateText, ", %.1f a second", rate);
    text += rateText;
    if (progress.total > progress.done && progress.searched > 0) {
        text += ", " +
                clockText(static_cast<i64>(static_cast<double>(progress.total - progress.done) / rate)) +
                " left";
    }
    return text;
}

void showProgress(Progress& progress, bool atOnce) {
    const i32 milliseconds = elapsedMs(progress.startedMs);
    if (!progress.shown || (!atOnce && milliseconds - progress.lastShownMs < progressPauseMs)) {
        return;
    }
    progress.lastShownMs = milliseconds;
    std::fprintf(stderr, "\r%s\033[K", progressText(progress, milliseconds).c_str());
}

void endProgress(const Progress& progress) {
    if (progress.shown) {
        std::fputs("\r\033[K", stderr);
    }
}

void complain(const Progress& progress, const std::string& message) {
    endProgress(progress);
    std::fprintf(stderr, "%s\n", message.c_str());
}

i32 statusOfEnd(PoolEnd end, const Progress& progress) {
    constexpr i32 bySignal = 128;
    switch (end) {
        case PoolEnd::interrupted:
            return bySignal + caughtSignal();
        case PoolEnd::noProcess:
            complain(progress, "tarvelmon-analyse: no process can be started");
            return 1;
        case PoolEnd::refused:
            return 1;
        case PoolEnd::done:
            break;
    }
    return 0;
}

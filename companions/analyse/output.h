// Standard output by whole lines, and what a person sees on standard error.
#pragma once

#include "platform/bits.h"
#include "worker_pool.h"

#include <string>
#include <string_view>

/// Writes all of it at once. False if it cannot be written: the reader has gone, or the disk is full.
[[nodiscard]] bool writeOut(std::string_view text);

/// How far the work is, in one line that is written again and again where standard error is a terminal.
struct Progress {
    bool shown;  // whether it is a terminal
    i32 startedMs;
    u64 total;  // 0: not known
    u64 done;
    u64 searched;  // of those done; the others came from an earlier output
    i32 lastShownMs;
};

[[nodiscard]] Progress startProgress(u64 total);
void showProgress(Progress& progress, bool atOnce);
/// Takes the line away.
void endProgress(const Progress& progress);

/// The line of a progress after so many milliseconds.
[[nodiscard]] std::string progressText(const Progress& progress, i32 milliseconds);

/// The exit status after a pool has ended so, which is told where nobody else has: 0 for done.
[[nodiscard]] i32 statusOfEnd(PoolEnd end, const Progress& progress);

/// A message on standard error, on a line of its own.
void complain(const Progress& progress, const std::string& message);

// Processes that analyse, each one position at a time. The program itself has one thread and searches nothing.
#pragma once

#include "analysis.h"

#include <functional>
#include <string>

/// What asking for the next position came to.
enum class NextPosition : u8 { given, notYet, noMore };

struct PoolOrder {
    i32 jobs;
    i32 hashMegabytes;  // each worker
    Limits limits;
    /// Hands out a position. They are numbered from 0 in the order they are handed out.
    std::function<NextPosition(Position& position)> next;
    /// A descriptor to wait for after notYet.
    std::function<int()> inputDescriptor;
    /// An answer, in whatever order; its fault says so if the worker has died of it. False ends everything.
    std::function<bool(u64 number, const Analysis& analysis)> take;
    /// Called now and then: for progress.
    std::function<void()> tick;
};

/// Why a pool has ended.
enum class PoolEnd : u8 { done, refused, interrupted, noProcess };

/// Lets workers analyse all that `next` gives. SIGINT, SIGTERM and SIGHUP end it early; after any end no worker is left.
[[nodiscard]] PoolEnd runPool(const PoolOrder& order);

/// Makes the three signals end a pool, and a closed pipe or a file that may not grow an error of writing. Once, at the
/// start.
void catchSignals();

/// The signal that has come, or 0.
[[nodiscard]] i32 caughtSignal();

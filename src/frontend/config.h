// The settings that outlast a command, from an INI file.
#pragma once

#include "platform/bits.h"

/// What is read at the start, from the working directory.
constexpr const char* configFileName = "tarvelmon.ini";

/// Reads every key into EngineOptions and TimeControl; a key that is missing, or has a value it may not have, takes its
/// default. Also sets what derives from a key: the working clocks (MaxTime) and the entry counts of the hash tables.
/// The tables themselves are not touched. Prints nothing, whatever is wrong with the file.
void loadConfig(const char* fileName);

/// Records of the transposition table that fit into so many MB.
[[nodiscard]] u64 hashEntriesFor(i32 megabytes);

/// Prints the settings for a person at the console.
void printParams();

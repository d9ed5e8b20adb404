// Positions in, positions out.
#pragma once

#include "options.h"

/// Analyses the lines of the input and writes them. Returns the exit status.
[[nodiscard]] i32 analysePositions(const Options& options);

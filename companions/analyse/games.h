// Games in, annotated games out.
#pragma once

#include "options.h"

/// Analyses each position of the games of the input. Returns the exit status.
[[nodiscard]] i32 analyseGames(const Options& options);

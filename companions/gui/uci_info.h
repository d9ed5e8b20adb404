// The "info" lines of UCI, printed on the search thread.
#pragma once

#include "searcher.h"

void printFinding(const Finding& finding);

/// The root move that is searched now, once the search has run long enough for somebody to read it.
void printRootMove(const std::string& text, i32 number, i32 count);

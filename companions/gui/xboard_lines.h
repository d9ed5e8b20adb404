// What the xboard side prints about a search.
#pragma once

#include "searcher.h"

/// Most bytes of a refused line that are said back.
constexpr std::size_t longestShownText = 200;

/// A thinking line, where they are wanted. On the search thread.
void printXboardFinding(const Finding& finding);

/// The answer to ".".
void printStatus();

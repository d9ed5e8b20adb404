// One page of HTML that needs nothing beside itself: no scripts, light or dark as its reader's system is.
#pragma once

#include "annotation.h"
#include "suite.h"

#include <string>
#include <vector>

[[nodiscard]] std::string gamesPage(const std::vector<JudgedGame>& games, i32 threshold);
[[nodiscard]] std::string suitePage(const std::vector<SuiteResult>& results);

/// Writes a page. Returns an empty text, or what went wrong.
[[nodiscard]] std::string writePage(const std::string& file, const std::string& page);

// The xboard side, protocol versions 1 and 2. Called with the session's mutex held and the search thread running.
#pragma once

#include "searcher.h"

#include <string>

/// Takes everything from the start position, in force mode.
void beginXboard();

/// Deals with a line. False at "quit".
[[nodiscard]] bool takeXboardLine(const std::string& line, SessionLock& lock);

/// Ends what runs, at "quit" and at the end of input.
void endXboard(SessionLock& lock);

// The UCI side. Called with the session's mutex held and the search thread running.
#pragma once

#include "searcher.h"

#include <string>

/// Answers "uci" and takes everything from the start position.
void beginUci();

/// Deals with a line. False at "quit".
[[nodiscard]] bool takeUciLine(const std::string& line, SessionLock& lock);

/// Ends what runs and answers what is owed, at "quit" and at the end of input.
void endUci(SessionLock& lock);

// What can be told of the files of a command line before the work begins.
#pragma once

#include "options.h"

#include <string>

/// Returns an empty text, or what is wrong: a file that cannot be read, a page that cannot be written, or one file that is
/// both input and output. Nothing is opened: what comes through a named pipe can be read just once.
[[nodiscard]] std::string checkFiles(const Options& options);

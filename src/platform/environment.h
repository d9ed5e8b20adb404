// What the system tells the program of its surroundings. Texts are UTF-8 on Windows and plain bytes elsewhere.
#pragma once

#include "platform/bits.h"

#include <string>
#include <vector>

/// What an environment variable holds, in `text`. False, and an empty text, if there is none.
[[nodiscard]] bool readEnvironment(const char* name, std::string& text);

/// The arguments of `main`, without the program's name.
[[nodiscard]] std::vector<std::string> programArguments(i32 argc, char** argv);

/// The folder of the running program where data usually lie beside programs; empty where they are installed apart.
[[nodiscard]] std::string programFolder();

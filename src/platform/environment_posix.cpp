// The POSIX side of environment.h.
#include "platform/environment.h"

#include <cstdlib>

bool readEnvironment(const char* name, std::string& text) {
    const char* const value = std::getenv(name);
    text = value != nullptr ? value : "";
    return value != nullptr;
}

std::vector<std::string> programArguments(i32 argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

std::string programFolder() {
    return {};
}

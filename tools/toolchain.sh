# shellcheck shell=bash
# Sourced by the start scripts: finds out what of the tools is missing and installs it. Says everything on standard
# error and reads nothing, for standard input and output belong to the engine.

say() {
    printf '%s\n' "$*" >&2
}

has() {
    command -v "$1" >/dev/null 2>&1
}

# The compiler is there if it knows C++20 and finds its library.
compilesCxx20() {
    has "${CXX:-c++}" &&
        printf '#include <bit>\n#include <string>\nint main() { return std::popcount(0u); }\n' |
        "${CXX:-c++}" -std=c++20 -fsyntax-only -x c++ - >/dev/null 2>&1
}

# Whether the compiler finds a header.
hasHeader() {
    printf '#include <%s>\n' "$1" | "${CXX:-c++}" -std=c++20 -fsyntax-only -x c++ - >/dev/null 2>&1
}

# cmakeIsRecent: the build files ask for 3.22.
cmakeIsRecent() {
    has cmake && cmake --version | awk 'NR == 1 { split($3, v, "."); exit !(v[1] > 3 || (v[1] == 3 && v[2] >= 22)) }'
}

# Prefix of commands that need the administrator: empty for root, sudo if it may be asked, else failure.
administrator() {
    if [ "$(id -u)" = 0 ]; then
        return 0
    fi
    has sudo || return 1
    if sudo -n true >/dev/null 2>&1; then
        echo "sudo -n"
    elif [ -t 2 ]; then
        echo "sudo" # asks for the password at the terminal
    else
        return 1
    fi
}

# installPackages PACKAGE...: by apt-get, as root or through sudo. Elsewhere says what is needed, and fails.
installPackages() {
    if ! has apt-get; then
        say "tarvelmon: this is no Debian or Ubuntu. Please install what these Debian packages hold: $*"
        return 1
    fi
    local prefix
    if ! prefix=$(administrator); then
        say "tarvelmon: not allowed to install packages. Please run as root:  apt-get install $*"
        return 1
    fi
    say "tarvelmon: installing $*"
    # Lists of packages may be missing on a new machine, and may be too old on another.
    $prefix apt-get -q update </dev/null >&2 || say "tarvelmon: apt-get update failed, trying with the lists at hand"
    if ! $prefix env DEBIAN_FRONTEND=noninteractive \
        apt-get -q install -y --no-install-recommends "$@" </dev/null >&2; then
        say "tarvelmon: apt-get install failed. Needed are: $*"
        return 1
    fi
}

# Collects in `missing` the packages the build itself needs.
missingBuildPackages() {
    compilesCxx20 || missing+=(g++)
    cmakeIsRecent || missing+=(cmake)
    has make || has ninja || missing+=(make)
}

# What is there after an installation can still be too old: says so, and fails.
checkBuildTools() {
    if ! compilesCxx20; then
        say "tarvelmon: ${CXX:-c++} does not compile C++20. GCC 11 or Clang 14 is needed, or set CXX to such a compiler."
        return 1
    fi
    if ! cmakeIsRecent; then
        say "tarvelmon: CMake 3.22 or later is needed."
        return 1
    fi
}

# Number of jobs that run at once.
jobCount() {
    nproc 2>/dev/null || getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2
}

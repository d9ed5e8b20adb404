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
    if [ "$prefix" = sudo ]; then
        sudo -v >&2 || return 1 # before the line of progress begins
    fi
    local log
    log=$(mktemp)
    # Lists of packages may be missing on a new machine, and may be too old on another.
    if ! { $prefix apt-get -q update ||
        echo "apt-get update failed, trying with the lists at hand"
        $prefix env DEBIAN_FRONTEND=noninteractive \
            apt-get -q -o APT::Status-Fd=1 install -y --no-install-recommends "$@"; } </dev/null 2>&1 |
        tee "$log" | showProgress "installing $*"; then
        cat "$log" >&2
        rm -f "$log"
        say "tarvelmon: apt-get install failed. Needed are: $*"
        return 1
    fi
    rm -f "$log"
}

# progressOf LINE: sets `percent` if the line of apt-get (which first fetches, then installs), make or ninja tells it.
progressOf() {
    local status='^(dl|pm)status:[^:]*:([0-9]+)' percentage='^\[ *([0-9]+)%\]' count='^\[([0-9]+)/([0-9]+)\]'
    if [[ $1 =~ $status ]]; then
        percent=$((BASH_REMATCH[2] / 2))
        if [ "${BASH_REMATCH[1]}" = pm ]; then
            percent=$((percent + 50))
        fi
    elif [[ $1 =~ $percentage ]]; then
        percent=${BASH_REMATCH[1]}
    elif [[ $1 =~ $count ]]; then
        percent=$((100 * BASH_REMATCH[1] / BASH_REMATCH[2]))
    fi
}

# showProgress WHAT: reads what a command says, and says in one line that grows how far it is.
showProgress() {
    local line percent=0 shown=0
    printf 'tarvelmon: %s' "$1" >&2
    while IFS= read -r line; do
        progressOf "$line"
        while [ $((shown + 10)) -le "$percent" ]; do
            shown=$((shown + 10))
            printf ' %d%%' "$shown" >&2
        done
    done
    printf '\n' >&2
}

# dropMovedBuild TREE FOLDER: empties a build folder that CMake has made in another place or for another tree: it was
# moved, renamed or copied, and CMake refuses it. The folder "play" holds what a player has put there, and stays.
dropMovedBuild() {
    local cache=$2/CMakeCache.txt tree folder
    if [ -f "$cache" ]; then
        tree=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$cache")
        folder=$(sed -n 's/^CMAKE_CACHEFILE_DIR:INTERNAL=//p' "$cache")
        if [ ! "$tree" -ef "$1" ] || [ ! "$folder" -ef "$2" ]; then
            find "$2" -mindepth 1 -maxdepth 1 ! -name play ! -name .lock -exec rm -rf {} +
        fi
    fi
}

# Collects in `missing` the packages the build itself needs.
missingBuildPackages() {
    compilesCxx20 || missing+=(g++)
    cmakeIsRecent || missing+=(cmake)
    has make || has ninja || missing+=(make)
}

# Debian's Wine has its programs in a folder of its own, and commands only where alternatives are set up.
hasWine() {
    has wine64 || has wine || [ -x /usr/lib/wine/wine64 ]
}

canRunWindows() {
    has x86_64-w64-mingw32-g++-posix && hasWine
}

# Collects in `missing` the packages that build the programs for Windows and run them here.
missingWindowsPackages() {
    has x86_64-w64-mingw32-g++-posix || missing+=(g++-mingw-w64-x86-64-posix)
    hasWine || missing+=(wine wine64)
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

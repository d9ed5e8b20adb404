# shellcheck shell=bash
# Sourced by ./run when something has changed since its last build, or there was none. Uses what ./run has set: the
# folders, the program, its record, and the lists of files. Says everything on standard error and reads nothing.
: "${top:?}" "${build:?}" "${play:?}" "${program:?}" "${record:?}"

# shellcheck source=tools/toolchain.sh
. "$top/tools/toolchain.sh"

# One line that tells what keeps the build from being made here; a compiler would tell it in many.
checkWritable() {
    local path=$top reason
    if [ -e "$build" ] || mkdir "$build" 2>/dev/null; then
        for path in "$build" "$play" "$build"/{.lock,CMakeCache.txt,CMakeFiles,Makefile,build.log}; do
            [ ! -e "$path" ] || [ -w "$path" ] || break
            path=
        done
    fi
    if [ -n "$path" ]; then
        reason=$(LC_ALL=C touch -c "$path" 2>&1) || true
        say "tarvelmon: cannot build: $(id -un) cannot write to $path, which belongs to" \
            "$(stat -c %U "$path" 2>/dev/null || echo somebody) (${reason##*: })." \
            "Copy the sources to a folder of your own and start ./run there."
        exit 1
    fi
}

installMissing() {
    local missing=()
    missingBuildPackages
    if [ ${#missing[@]} -gt 0 ]; then
        installPackages "${missing[@]}"
        checkBuildTools
    fi
}

# A file that has changed although its time is not later than the last build (an older version put back, a clock that
# was set back, an edit while the build ran) is not seen by make: then everything is compiled anew.
changedUnseen() {
    local line path
    [ -f "$record" ] || return 1
    while IFS= read -r line; do
        path=${line% * *}
        if [ ! "$path" -nt "$record" ] && grep -qF "$path " "$record"; then
            return 0
        fi
    done < <(listSources 2>/dev/null | grep -vxFf "$record")
    return 1
}

# The generator is CMake's own choice, which does not look whether make is there.
configure() {
    local generator=()
    if [ ! -f "$build/CMakeCache.txt" ] && [ -z "${CMAKE_GENERATOR:-}" ] && ! has make; then
        generator=(-G Ninja)
    fi
    cmake -S "$top" -B "$build" ${generator[0]+"${generator[@]}"}
}

compile() {
    cmake --build "$build" "$@" --target "play-$program" --parallel "$(jobCount)"
}

makePlayFolder() {
    mkdir -p "$play/syzygy"
    if [ ! -e "$play/tarvelmon.ini" ]; then
        cp "$top/data/tarvelmon.ini" "$play/tarvelmon.ini"
    fi
    # A link, so that a new book is played from at once.
    if [ ! -e "$play/book.bin" ]; then
        ln -sf ../book.bin "$play/book.bin"
    fi
}

# What was there before the build goes into the record: what changes meanwhile is built the next time.
buildAll() {
    local sources="" more=() log=$build/build.log
    if changedUnseen; then
        more=(--clean-first)
    fi
    sources=$(listSources 2>/dev/null) || true
    if ! { configure && compile ${more[0]+"${more[@]}"}; } </dev/null 2>&1 9>&- | tee "$log" | showProgress building; then
        cat "$log" >&2
        say "tarvelmon: the build failed"
        exit 1
    fi
    if [ ${#more[@]} -gt 0 ]; then
        rm -f "$build"/.*.files # of programs that are no longer there
    fi
    makePlayFolder
    if [ -n "$sources" ]; then
        { printf '%s\n' "$sources" && listProducts; } >"$record.new" && mv "$record.new" "$record"
    fi
}

# An interface that starts two engines at once runs this twice: the second waits.
buildEngine() {
    checkWritable
    installMissing
    exec 9>"$build/.lock"
    if has flock && ! flock -n 9; then
        say "tarvelmon: waiting for another build in $build"
        flock 9
    fi
    dropMovedBuild "$top" "$build"
    if ! isUpToDate; then
        buildAll
    fi
    exec 9>&-
}

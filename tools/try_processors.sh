#!/usr/bin/env bash
# Builds the tests for other processors and runs under emulation those that tell most: the golden lists written anew and
# compared to the byte, then search, evaluation, moves, the book, and tables as they are read from files. Says a table
# at the end. Not part of ./test: it takes half an hour or so on a quiet machine.
#
# usage: try_processors.sh [PRESET...]        without any: i686 arm64 s390x
#
# i686 counts 32 bits a word; s390x has the most significant byte first. TARVELMON_SYZYGY_PATH and TARVELMON_BOOK_FILE
# are used as by ./test.
set -euo pipefail

top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
# shellcheck source=tools/toolchain.sh
. "$top/tools/toolchain.sh"

presets=("$@")
[ $# -gt 0 ] || presets=(i686 arm64 s390x)

# The stages: a name, a test program, what of it runs. Whole programs where that takes minutes at most; the searches to
# full depth, which every processor makes alike if it makes the shorter ones alike, are left to the builds that are fast.
stages=(
    "bits        platform_test   *"
    "moves       board_test      -*Perft*:*FullDepth*"
    "hash        hash_test       -*FullDepth*"
    "evaluation  eval_test       -*FullDepth*"
    "searches    search_test     -*FullDepth*"
    "material    material_test   -*FullDepth*"
    "book        book_test       *"
    "tables      tablebase_test  -*Playout*:*FullDepth*"
    "settings    frontend_test   *"
)

# Left out where a processor is emulated: what starts its own program anew, which this machine's system cannot run; and
# memory on large pages, which is the emulator's own.
notEmulated="*DeathTest*:*OnLargePages*"

# Lists that are written anew: the list, and what names its positions. That of full searches takes minutes.
lists=(
    "moves.txt moves.txt"
    "see.txt see.txt"
    "user.txt user.in"
    "eval.txt eval.txt"
    "search-full.txt search-full.txt"
)

installMissing() {
    local missing=() preset
    missingBuildPackages
    has ninja || missing+=(ninja-build)
    has python3 || missing+=(python3)
    [ -f /usr/src/googletest/CMakeLists.txt ] || missing+=(googletest)
    for preset in "${presets[@]}"; do
        case $preset in
            i686) has i686-linux-gnu-g++ || missing+=(g++-i686-linux-gnu) ;;
            arm64) has aarch64-linux-gnu-g++ || missing+=(g++-aarch64-linux-gnu) ;;
            s390x) has s390x-linux-gnu-g++ || missing+=(g++-s390x-linux-gnu) ;;
            *)
                say "there is no processor $preset here"
                exit 2
                ;;
        esac
        [ "$preset" = i686 ] || has qemu-aarch64 || missing+=(qemu-user)
    done
    if [ ${#missing[@]} -gt 0 ]; then
        installPackages "${missing[@]}"
    fi
    checkBuildTools
}

emulatorOf() {
    case $1 in
        i686) echo env ;; # an x86-64 machine runs these itself
        arm64) echo qemu-aarch64 ;;
        s390x) echo qemu-s390x ;;
    esac
}

# Every program has its folder, so that a stage that fails tells its own build.
build() {
    local folder=$top/build-$1 targets=(list_writer) launcher=() stage
    for stage in "${stages[@]}"; do
        read -r _ program _ <<<"$stage"
        targets+=("$program")
    done
    if has ccache; then
        launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    mkdir -p "$folder"
    cmake --preset "$1" -DTARVELMON_LTO=OFF "${launcher[@]}" </dev/null >"$folder/configure.log" 2>&1 &&
        cmake --build "$folder" --parallel "$(jobCount)" --target "${targets[@]}" tarvelmon book \
            </dev/null >"$folder/build.log" 2>&1
}

rows=()
failures=0

row() {
    rows+=("$(printf '%-9s %-16s %7s %7s %7s %8s' "$@")")
    say "${rows[-1]}"
}

# Runs one stage; counts by the words of the test program itself.
runStage() {
    local preset=$1 name=$2 program=$3 filter=$4 folder=$top/build-$1 begun=$SECONDS status=0 log passed failed skipped
    log=$folder/$name.log
    if [ "$preset" != i686 ]; then
        case $filter in
            *-*) filter=$filter:$notEmulated ;;
            *) filter=$filter-$notEmulated ;;
        esac
    fi
    "$(emulatorOf "$preset")" "$folder/tests/$program" --gtest_filter="$filter" </dev/null >"$log" 2>&1 || status=$?
    passed=$(awk '/^\[  PASSED  \]/ { count = $4 } END { print count + 0 }' "$log")
    failed=$(awk '/^\[  FAILED  \] [0-9]+ tests?, / { count = $4 } END { print count + 0 }' "$log")
    skipped=$(awk '/^\[  SKIPPED \] [0-9]+ tests?, / { count = $4 } END { print count + 0 }' "$log")
    # A program that ended early has counted nothing.
    if [ $status != 0 ] && [ "$failed" = 0 ]; then
        failed="?"
    fi
    [ $status = 0 ] && [ "$passed" != 0 ] || failures=$((failures + 1))
    row "$preset" "$name" "$passed" "$failed" "$skipped" "$((SECONDS - begun))"
}

# Writes one list anew; counts lines, all of them failed if a byte differs.
runList() {
    local preset=$1 list=$2 input=$3 golden=$top/tests/data/golden written=$top/build-$1/$2 begun=$SECONDS count
    count=$(wc -l <"$golden/$list")
    if "$(emulatorOf "$preset")" "$top/build-$preset/tests/list_writer" "$list" <"$golden/$input" >"$written" 2>&1 &&
        cmp "$written" "$golden/$list" >&2; then
        row "$preset" "$list" "$count" 0 0 "$((SECONDS - begun))"
    else
        failures=$((failures + 1))
        row "$preset" "$list" 0 "$count" 0 "$((SECONDS - begun))"
    fi
}

cd "$top"
installMissing
row processor stage passed failed skipped seconds
for preset in "${presets[@]}"; do
    begun=$SECONDS
    if ! build "$preset"; then
        say "$preset: the build failed, see $top/build-$preset/build.log"
        failures=$((failures + 1))
        continue
    fi
    row "$preset" "(build)" - - - "$((SECONDS - begun))"
    for list in "${lists[@]}"; do
        read -r name input <<<"$list"
        runList "$preset" "$name" "$input"
    done
    for stage in "${stages[@]}"; do
        read -r name program filter <<<"$stage"
        runStage "$preset" "$name" "$program" "$filter"
    done
done
printf '%s\n' "${rows[@]}"
[ "$failures" = 0 ]

#!/usr/bin/env bash
# Measures the engine of a build folder that has the benchmarks:
#
#   tools/measure.sh BUILD            instructions a node, leaf, evaluation and probe, and from start to the feature line
#   tools/measure.sh BUILD OTHER      the same, then processor time in pairs against another build folder
#   tools/measure.sh --check BUILD    status 1 if a node of the search takes over 3 % more instructions than is recorded
#                                     beside the signature, 77 if that number was recorded with another compiler
#
# Instructions are counted by callgrind, the same in each run and on a busy machine. Times want a quiet one.
set -euo pipefail

kinds=(search perft evaluation tables)
tolerance=103 # percent of the recorded instructions
pairs=7

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

usage() {
    sed -n '2,/^set/s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
}

# counted OPTIONS... PROGRAM ARGUMENTS...: runs it under callgrind and prints the instructions; what the program says goes
# to the file "said".
counted() {
    valgrind --tool=callgrind --callgrind-out-file="$scratch/counts" "$@" >"$scratch/said" 2>"$scratch/errors" || {
        cat "$scratch/said" "$scratch/errors" >&2
        return 1
    }
    sed -n 's/^summary: //p' "$scratch/counts"
}

# The value behind a name in what the program said.
said() {
    sed -n "s/^$1=//p" "$scratch/said"
}

countWork() {
    counted --toggle-collect='measuredWork*' "$1/bench/measured_work" "$2"
}

countStart() {
    mkdir -p "$scratch/home"
    (cd "$scratch/home" && printf 'xboard\nprotover 2\nquit\n' | counted "$1")
}

printInstructions() {
    local build=$1 kind instructions
    for kind in "${kinds[@]}"; do
        instructions=$(countWork "$build" "$kind")
        awk -v all="$instructions" -v count="$(said count)" -v unit="$(said unit)" \
            'BEGIN { printf "%10.1f instructions a %s (%d)\n", all / count, unit, count }'
    done
    printf '%10d instructions from start to feature line and end\n' "$(countStart "$build/tarvelmon")"
}

checkSearch() {
    local build=$1 instructions
    instructions=$(countWork "$build" search)
    if [ "$(said compiler)" != "$(said recordedWith)" ]; then
        echo "recorded with $(said recordedWith), this is $(said compiler)"
        exit 77
    fi
    awk -v all="$instructions" -v count="$(said count)" -v recorded="$(said recorded)" -v tolerance="$tolerance" 'BEGIN {
        node = all / count
        printf "%.1f instructions a node, recorded %d\n", node, recorded
        exit node * 100 > recorded * tolerance
    }'
}

# Processor seconds of a command in user mode.
userSeconds() {
    local TIMEFORMAT=%U
    { time "$@" >"$scratch/said" 2>&1; } 2>&1
}

# How the times of one kind compare, pair by pair: below 1 the first build is the faster.
printPairs() {
    local build=$1 other=$2 kind=$3 pair
    for ((pair = 0; pair < pairs; ++pair)); do
        echo "$(userSeconds "$build/bench/measured_work" "$kind" 10) $(userSeconds "$other/bench/measured_work" "$kind" 10)"
    done | awk '{ print $1 / $2 }' | sort -n | awk -v kind="$kind" '
        { ratio[NR] = $1 }
        END { printf "%-10s time to the other build, median %.3f (%.3f to %.3f)\n", kind, ratio[int((NR + 1) / 2)],
              ratio[1], ratio[NR] }'
}

case $#:${1:-} in
2:--check) checkSearch "$2" ;;
1:*) printInstructions "$(realpath "$1")" ;;
2:*)
    printInstructions "$(realpath "$1")"
    for kind in "${kinds[@]}"; do
        printPairs "$1" "$2" "$kind"
    done
    ;;
*) usage ;;
esac

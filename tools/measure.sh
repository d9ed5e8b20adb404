#!/usr/bin/env bash
# Measures the engine of a build folder that has the benchmarks:
#
#   tools/measure.sh BUILD            instructions a node, leaf, evaluation and probe, and from start to the feature line
#   tools/measure.sh BUILD OTHER      the same, then processor time in pairs against another build folder
#   tools/measure.sh --check BUILD    status 1 if a node of the search takes over 3 % more instructions than is recorded
#                                     beside the signature, 77 if that number was recorded with another compiler
#   tools/measure.sh --row BUILD WHAT the row of the commit that is checked out for the table of docs/performance.md
#   tools/measure.sh --chart BUILD    draws docs/performance.svg from that table
#   tools/measure.sh --jobs BUILD     how many times as fast as one job tarvelmon-analyse is with a job for each core
#
# Instructions are counted by callgrind, the same in each run and on a busy machine. Times want a quiet one.
set -euo pipefail

kinds=(search perft evaluation tables)
tolerance=103 # percent of the recorded instructions
pairs=7
jobsDepth=9
jobsCopies=12
jobsPairs=3
docs=$(dirname "$(realpath "${BASH_SOURCE[0]}")")/../docs

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

# A row as the table has them; the last figure is in millions.
printRow() {
    local build=$1 what=$2 kind instructions
    printf '| %s | %s |' "$(git -C "$docs" rev-parse --short=7 HEAD)" "$what"
    for kind in search perft evaluation; do
        instructions=$(countWork "$build" "$kind")
        awk -v all="$instructions" -v count="$(said count)" 'BEGIN { printf " %.1f |", all / count }'
    done
    countStart "$build/tarvelmon" | awk '{ printf " %.2f |\n", $1 / 1e6 }'
}

drawChart() {
    "$1/bench/performance_chart" "$docs/performance.md" >"$scratch/chart"
    cat "$scratch/chart" >"$docs/performance.svg"
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

# Wall seconds of the companion for collections with so many jobs.
analyseSeconds() {
    local TIMEFORMAT=%R
    { time "$1/companions/analyse/tarvelmon-analyse" --jobs "$2" --depth "$jobsDepth" "$scratch/positions" \
        >"$scratch/found.$2"; } 2>&1
}

# One job against all, alternating, on a suite several times over, so that the end, where not all have work, counts little.
printJobs() {
    local build=$1 cores pair
    cores=$(nproc)
    for ((pair = 0; pair < jobsCopies; ++pair)); do
        cat "$docs/../tests/data/suites/well_known.epd"
    done >"$scratch/positions"
    for ((pair = 0; pair < jobsPairs; ++pair)); do
        echo "$(analyseSeconds "$build" 1) $(analyseSeconds "$build" "$cores")"
        cmp "$scratch/found.1" "$scratch/found.$cores" >&2
    done | tee "$scratch/seconds" | awk '{ print $1 / $2 }' | sort -n | awk -v cores="$cores" '
        { ratio[NR] = $1 }
        END { printf "%d jobs are %.3f times as fast as one (%.3f to %.3f), that is %.3f of their number\n", cores,
              ratio[int((NR + 1) / 2)], ratio[1], ratio[NR], ratio[int((NR + 1) / 2)] / cores }'
    awk '{ printf "seconds %s with one, %s with all\n", $1, $2 }' "$scratch/seconds"
}

case $#:${1:-} in
2:--chart) drawChart "$2" ;;
2:--jobs) printJobs "$2" ;;
3:--row) printRow "$(realpath "$2")" "$3" ;;
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

#!/usr/bin/env bash
# Runs fuzz targets for a time each: tools/fuzz.sh SECONDS [TARGET...], all of them without a name. Needs Clang and
# CMake. Builds in build-fuzz; inputs that reach new code are kept there, in inputs/TARGET. An input that breaks a target
# is written to build-fuzz/findings; once the fault is mended, add the input to fuzz/corpus/TARGET. Status 0 if nothing
# broke.
set -euo pipefail

top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
build=$top/build-fuzz

if [ $# -lt 1 ] || ! [[ $1 =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: tools/fuzz.sh SECONDS [TARGET...]" >&2
    exit 2
fi
seconds=$1
shift

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for source in "$top"/fuzz/*_fuzz.cpp; do
        targets+=("$(basename "$source" _fuzz.cpp)")
    done
fi

cmake -S "$top" -B "$build" -DTARVELMON_FUZZ=ON -DTARVELMON_ANALYSE=ON -DCMAKE_CXX_COMPILER="${CXX:-clang++}" >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]/%/_fuzz}" >/dev/null

broken=0
for target in "${targets[@]}"; do
    mkdir -p "$build/inputs/$target" "$build/findings"
    log=$build/findings/$target.log
    if "$build/fuzz/${target}_fuzz" -max_total_time="$seconds" -timeout=60 \
        -artifact_prefix="$build/findings/$target-" \
        "$build/inputs/$target" "$top/fuzz/corpus/$target" >"$log" 2>&1; then
        echo "$target: $(grep '^Done ' "$log" | tail -n 1)"
    else
        echo "$target: BROKEN, see $log"
        tail -n 30 "$log"
        broken=1
    fi
done
exit "$broken"

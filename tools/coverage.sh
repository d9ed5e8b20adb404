#!/usr/bin/env bash
# Tells which lines of src/ the tests run: builds the "coverage" preset in build-coverage, runs all but the longest tests,
# prints the share of each file and every line that no test runs. Exit status 0 if the tests passed. Needs gcovr.
set -euo pipefail

top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
# shellcheck source=tools/toolchain.sh
. "$top/tools/toolchain.sh"
has gcovr || installPackages gcovr
has ninja || installPackages ninja-build

cd "$top"
cmake --preset coverage >/dev/null
cmake --build --preset coverage --parallel "$(jobCount)"
find build-coverage -name '*.gcda' -delete
status=0
ctest --preset coverage --parallel "$(jobCount)" || status=$?
gcovr --root . --filter src/ --exclude '.*_windows\.cpp' --exclude-lines-by-pattern '\s*assert\(.*' \
    --gcov-ignore-parse-errors --txt --sort-uncovered build-coverage
exit "$status"

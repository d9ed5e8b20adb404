#!/usr/bin/env bash
# Installs what builds the programs for Windows here (MinGW-w64) and runs them (Wine). With both, ./test has one stage
# more. Nothing else needs them.
set -euo pipefail

top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
# shellcheck source=tools/toolchain.sh
. "$top/tools/toolchain.sh"

missing=()
missingBuildPackages
has ninja || missing+=(ninja-build)
has python3 || missing+=(python3)
missingWindowsPackages
if [ ${#missing[@]} -gt 0 ]; then
    installPackages "${missing[@]}"
fi
checkBuildTools

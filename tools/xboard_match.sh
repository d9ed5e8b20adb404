#!/usr/bin/env bash
# Plays a match under the real xboard program on a display of its own, and judges it afterwards.
#
#   tools/xboard_match.sh [--games N] [--minutes M[:SS]] [--increment S] [--ponder] [--out FOLDER] ENGINE OPPONENT
#
# ENGINE is the command of the engine to be judged, for instance ./run; OPPONENT any xboard engine, "fairymax" or
# "phalanx". Colours alternate. FOLDER (default build/xboard-match) gets games.pgn and debug.txt. Exit status 0 only if all
# games were played with no illegal move, no loss on time and no error line of ENGINE, and the results are right.
set -euo pipefail

top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
games=2 minutes=1 increment=1 ponder=false out=$top/build/xboard-match

while [ $# -gt 0 ]; do
    case $1 in
        --games) games=$2; shift 2 ;;
        --minutes) minutes=$2; shift 2 ;;
        --increment) increment=$2; shift 2 ;;
        --ponder) ponder=true; shift ;;
        --out) out=$2; shift 2 ;;
        -*) sed -n '2,9p' "$0" >&2; exit 2 ;;
        *) break ;;
    esac
done
if [ $# -ne 2 ]; then
    sed -n '2,9p' "$0" >&2
    exit 2
fi

export PATH=$PATH:/usr/games
for program in xboard Xvfb xvfb-run python3 "${2%% *}"; do
    if ! command -v "$program" >/dev/null; then
        echo "$program is missing. Debian packages: xboard xvfb xauth python3 fairymax phalanx" >&2
        exit 2
    fi
done

mkdir -p "$out"
out=$(cd "$out" && pwd)
rm -f "$out/games.pgn" "$out/debug.txt"
engine=$(command -v "${1%% *}")
engine=$(readlink -f "$engine")

# A home of its own keeps the person's settings out of the match and the match out of the settings.
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
status=0
HOME=$home xvfb-run -a -s "-screen 0 1024x768x24" timeout 6h xboard \
    -fcp "$engine" -fd "$(dirname "$engine")" -scp "$2" -sd "$home" \
    -mode TwoMachines -mg "$games" -tc "$minutes" -inc "$increment" -mps 0 \
    -"$([ $ponder = true ] && echo ponder || echo xponder)" \
    -sgf "$out/games.pgn" -debug -nameOfDebugFile "$out/debug.txt" \
    -soundProgram "" -ringBellAfterMoves false -testClaims true -popupExitMessage false -popupMoveErrors false -xpopup \
    </dev/null >"$out/xboard.txt" 2>&1 || status=$?
python3 "$top/tools/judge_xboard_match.py" "$out/games.pgn" "$out/debug.txt" "$games" "$status"

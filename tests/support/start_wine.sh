#!/bin/sh
# start_wine.sh WINE SERVER: makes the folder that WINEPREFIX names, and starts Wine's own processes, which stay until
# "SERVER -k". They keep no stream open, for whose end somebody may wait.
set -e
mkdir -p "$WINEPREFIX"
exec </dev/null >/dev/null 2>&1
"$2" -k || : # what a broken run has left
"$2" -p
"$1" wineboot -i

#!/usr/bin/env bash
# The library changed in one small way at a time, and what the tests notice of it: what ./run mutate does. It goes on
# where it was stopped, since all of it takes many hours.
# A mutant that lived for no known reason was noticed: it fails the stage.
# usage: mutants.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

log=$2/prove/mutants.log
status=0
VELSOCK_BUILD_DIR=$2 "$1/run" mutate >"$log" 2>&1 || status=$?
# The table of the floors, and the total; what lives without a reason stands before them.
if [ "$status" = 0 ]; then
  awk '/^floor\t/ { shown = 1 } /^folder\t/ { shown = 0 } (shown || / cases of mutants: /) && NF' "$log"
else
  cat "$log"
fi
exit "$status"

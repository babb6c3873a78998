#!/usr/bin/env bash
# All tests: what ./run test does, and the cases of those that have many each.
# tests/mutation shows what they notice.
# usage: tests.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

log=$2/prove/tests.log
if ! VELSOCK_BUILD_DIR=$2 "$1/run" test >"$log" 2>&1; then
  cat "$log"
  exit 1
fi
awk -f "$1/tests/SumCases.awk" "$2/release/tests.xml"
tail -n 1 "$log"

#!/usr/bin/env bash
# The scenes of tests/faults in threads that are cancelled before each of their calls, in processes that fork there,
# without standard streams, with high numbers of descriptors or too few of them, and under signals; and the storms of
# tests/storms.
# Its tests plant a spoiled byte, a wait begun anew after each signal, a forgotten start-up and a forgotten descriptor,
# and see each noticed.
# usage: storms.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

cmake --preset release -B "$2/release" >/dev/null
cmake --build "$2/release" --parallel "$(nproc)" --target fault_campaign storm_campaign >/dev/null

results=$(mktemp)
trap 'rm -f "$results"' EXIT
status=0
"$2/release/bin/fault_campaign" --stage cancellations --stage forks --stage descriptors --stage signals |
  tee "$results" || status=1
"$2/release/bin/storm_campaign" | tee -a "$results" || status=1

cases=$(awk '/^[0-9]+ cases of / { cases += $1 } END { print cases + 0 }' "$results")
signals=$(sed -nE 's/.* got ([0-9]+) signals.*/\1/p' "$results" | awk '{ signals += $1 } END { print signals + 0 }')
echo "$cases cases with $signals signals; $(tail -n 1 "$results")"
exit "$status"

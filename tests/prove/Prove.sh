#!/usr/bin/env bash
# Runs all stages of the proof, or those that are named, one after the other, and prints each one's last line again at
# the end: its totals.
# usage: Prove.sh PROJECT_FOLDER BUILD_FOLDER [STAGE...]
set -euo pipefail

project=$1 builds=$2
shift 2
# shellcheck disable=SC2046  # names
[ "$#" != 0 ] || set -- $("$project/tests/prove/Stages.sh")

folder=$builds/prove
mkdir -p "$folder"
status=0
for stage in "$@"; do
  echo "$stage"
  if "$project/tests/prove/$stage.sh" "$project" "$builds" 2>&1 | tee "$folder/$stage.txt"; then
    printf '%s: %s\n' "$stage" "$(tail -n 1 "$folder/$stage.txt")" >"$folder/$stage.total"
  else
    printf '%s: FAILED: %s\n' "$stage" "$(tail -n 1 "$folder/$stage.txt")" >"$folder/$stage.total"
    status=1
  fi
done
for stage in "$@"; do cat "$folder/$stage.total"; done
exit "$status"

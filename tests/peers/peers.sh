#!/usr/bin/env bash
# Runs all scripts of this folder in full, and adds up what they have counted. One that cannot be run has failed.
# usage: peers.sh AGENT [SCRIPT...]
set -euo pipefail

agent=$1
folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
shift
[ $# -gt 0 ] || set -- "$folder"/*Tests.sh
export VELSOCK_PEERS=whole
log=$(mktemp)
trap 'rm -f "$log"' EXIT
passed=0
failed=0

# The longest test takes a few minutes; one that hangs is ended with all its hosts.
run_test() {
  local begin=$SECONDS status=0
  timeout --kill-after 10 900 "$folder/../network/Network.sh" "$agent" "$1" "$2" >>"$log" || status=$?
  echo "$(basename "$1" Tests.sh).${2#Test}: $((SECONDS - begin)) s, exit code $status"
  if [ "$status" = 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
}

for script in "$@"; do
  mapfile -t tests < <(grep -oE '^Test[A-Za-z0-9]+' "$script")
  for test in "${tests[@]}"; do run_test "$script" "$test"; done
done

# Some implementations of awk end at 2^31 with %d.
totals=$(awk '$1 == "counted" { sum[$3] += $2 } END { for (what in sum) printf "%.0f %s, ", sum[what], what }' "$log")
echo "$totals$passed passed, $failed failed"
[ "$failed" = 0 ]

#!/usr/bin/env bash
# Compares what is counted with the limits, sees that faults are found, and ends with a line "N passed, N failed".
#
#   gate.sh PROGRAMS MODULE     the folder of the benchmarks' programs, and the library
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")
programs=$1
module=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
passed=0
failed=0

# add_totals LINE: that of a comparison.
add_totals() {
  local words
  read -ra words <<<"$1"
  passed=$((passed + words[0]))
  failed=$((failed + words[2]))
}

compare() { "$here/compare.sh" "$here/limits.txt" "$1" || true; }

# must_see WHAT ROW SUBJECT COUNTER MORE HELD: one more failure when that is added to what was counted, HELD (0 or 1)
# of which had a limit that was held.
must_see() {
  local seen
  awk -v what="$2 $3 $4" -v more="$5" '
    $1 " " $2 " " $3 == what { $4 += more; found = 1 }
    { print }
    END { if (!found) print what, more }' "$scratch/counts" >"$scratch/planted"
  seen=$(compare "$scratch/planted" | tail -n 1)
  if [ "$seen" = "$((passed_before - $6)) passed, $((failed_before + 1)) failed" ]; then
    echo "seen         $1"
    passed=$((passed + 1))
  else
    echo "NOT SEEN     $1"
    failed=$((failed + 1))
  fi
}

"$here/count.sh" "$programs/bench_counts" >"$scratch/counts"
"$here/module.sh" "$programs/bench_load" library "$module" >>"$scratch/counts"
compare "$scratch/counts" >"$scratch/lines"
sed '$d' "$scratch/lines"
add_totals "$(tail -n 1 "$scratch/lines")"
passed_before=$passed
failed_before=$failed

must_see "an allocation more" send library allocations 1 1
must_see "another system call" send library call:getpid 1 0
must_see "a second system call of the same name" send library call:sendto 1 1
for row in send receive; do
  must_see "30 instructions more in $row" "$row" library instructions 30 1
done

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]

#!/usr/bin/env bash
# Prints what one transfer of 64 bytes costs, through the library and by the bare system call.
#
#   report.sh PROGRAM VALGRIND
#
# Instructions and system calls are those of user space between the entry of the loop and its end, counted by
# callgrind and divided by the number of transfers; the loop itself (a few instructions) is part of all figures.
# Allocations and time come from a run of the same program outside callgrind.
set -euo pipefail

program=$1
valgrind=$2
profile=$(mktemp)
trap 'rm -f "$profile"' EXIT

counted_batches=50
timed_batches=5000

# "instructions system-calls" in all of the measured loops.
count_instructions() {
  "$valgrind" --quiet --tool=callgrind --callgrind-out-file="$profile" --collect-atstart=no \
    --toggle-collect='*MeasuredTransfers*' --collect-systime=nsec "$program" "$1" "$counted_batches"
  awk '/^totals:/ { print $2, $3 }' "$profile"
}

# "subject instructions allocations system-calls nanoseconds", all for one transfer.
measure() {
  local counted timed
  counted=$(count_instructions "$1")
  timed=$("$program" "$1" "$timed_batches")
  awk -v subject="$1" -v counted="$counted" -v timed="$timed" 'BEGIN {
    split(counted, part, /[ \n]/)  # transfers allocations nanoseconds instructions system-calls
    split(timed, time, " ")
    printf "%s %.2f %.4f %.4f %d\n", subject, part[4] / part[1], time[2] / time[1],
           part[5] / part[1], time[3]
  }'
}

printf '%-16s %14s %14s %14s %14s\n' '64 bytes' instructions allocations 'system calls' nanoseconds
for direction in send receive; do
  for kind in bare library; do
    measure "$kind-$direction"
  done
done | awk '
  { printf "%-16s %14.2f %14.4f %14.4f %14d\n", $1, $2, $3, $4, $5; instructions[$1] = $2 }
  function difference(direction, aim) {
    more = instructions["library-" direction] - instructions["bare-" direction]
    printf "%s: %.2f instructions more than the bare call (aim: at most %d): %s\n", direction, more, aim,
           more <= aim ? "held" : "missed"
  }
  END { print ""; difference("send", 15); difference("receive", 20) }'

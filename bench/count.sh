#!/usr/bin/env bash
# Counts what operations ask for, and prints it in lines "ROW SUBJECT COUNTER VALUE", all for one operation.
#
#   count.sh PROGRAM [WORD...]
#
# The program prints such lines itself: how many operations it measured, their allocations and locks. Added to
# these are the user-space instructions between the marks that it sets, by callgrind, and the system calls between
# them by their names, by strace ("call:NAME").
set -euo pipefail

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# Valgrind passes a later change of the limit on to nobody.
ulimit -n "$(ulimit -H -n)"

run_under_callgrind() {
  valgrind --quiet --tool=callgrind --callgrind-out-file="$scratch/profile" --collect-atstart=no "$@" \
    >/dev/null 2>"$scratch/log" || fail "$1 under callgrind"
}

run_under_strace() {
  strace -f -qq -e signal=none -o "$scratch/trace" "$@" >"$scratch/printed" 2>"$scratch/log" ||
    fail "$1 under strace"
}

fail() {
  cat "$scratch/log" >&2
  echo "bench: $1 failed" >&2
  exit 1
}

# "ROW SUBJECT instructions SUM" for each part of the profile.
instructions() {
  awk '/^desc: Trigger: Client Request: / { what = $5 " " $6 }
       /^summary: / && what != "" { print what, "instructions", $2; what = "" }' "$scratch"/profile.*
}

# "ROW SUBJECT call:NAME SUM" for each system call between the marks; the marks are the calls of access whose
# path begins with the word bench.
system_calls() {
  awk '
    match($0, /"bench (begin|end) [^"]*"/) {
      split(substr($0, RSTART + 1, RLENGTH - 2), mark, " ")
      inside = mark[2] == "begin" ? mark[3] " " mark[4] : ""
      next
    }
    inside != "" && $2 ~ /^[a-z0-9_]+\(/ { ++calls[inside " call:" substr($2, 1, index($2, "(") - 1)] }
    END { for (call in calls) print call, calls[call] }' "$scratch/trace" | LC_ALL=C sort
}

# What was counted by others is for all measured operations together.
per_operation() {
  awk '$3 == "operations" { operations[$1 " " $2] = $4 }
       $3 == "instructions" || $3 ~ /^call:/ { $4 = sprintf("%.4f", $4 / operations[$1 " " $2]) }
       { print }' "$@"
}

run_under_callgrind "$@"
run_under_strace "$@"
per_operation "$scratch/printed" <(instructions) <(system_calls)

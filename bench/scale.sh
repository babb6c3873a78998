#!/usr/bin/env bash
# Prints what operations cost as the numbers grow that they depend on, and with which exponent.
#
#   scale.sh PROGRAMS RESULTS     the folder of the benchmarks' programs, and the file that keeps what was counted
#
# The exponent is that between the last two numbers: 0 where the cost stays, 1 where it grows as the number does. Of
# threads, all of them do 500 operations each; what is told is how often they waited for a lock.
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")
programs=$1
results=$2

# A table of hosts of its own needs a mount of its own.
can_mount() { unshare --map-root-user --mount true 2>/dev/null; }

count_with_own_hosts() {
  local hosts
  hosts=$(mktemp)
  # shellcheck disable=SC2016  # for the inner shell
  unshare --map-root-user --mount bash -c 'mount --bind "$1" /etc/hosts && "${@:2}" "$1"' - \
    "$hosts" "$here/count.sh" "$programs/bench_scale"
  rm "$hosts"
}

count() {
  if can_mount; then
    count_with_own_hosts
  else
    echo "scale: hosts of many addresses are not measured: no mount can be made" >&2
    "$here/count.sh" "$programs/bench_scale"
  fi
}

count >"$results.new"
mv "$results.new" "$results"

awk '
  $3 == "operations" {
    if (!($1 in numbers)) rows[++count] = $1
    numbers[$1] = numbers[$1] " " $2
  }
  # Threads sleep until it is their turn, so that their instructions mean nothing.
  $3 == ($1 ~ /^threads/ ? "call:futex" : "instructions") { cost[$1, $2] = $4 }
  function exponent(row, before, last) {
    if (cost[row, before] <= 0 || cost[row, last] <= 0) return "-"
    return sprintf("%.2f", log(cost[row, last] / cost[row, before]) / log(last / before))
  }
  function print_row(row,   parts, number, index_) {
    parts = split(numbers[row], number, " ")
    printf "%-29s", row
    for (index_ = 1; index_ <= parts; ++index_) printf " %6d: %-11.0f", number[index_], cost[row, number[index_]]
    printf " exponent %s\n", exponent(row, number[parts - 1], number[parts])
  }
  END { for (row = 1; row <= count; ++row) print_row(rows[row]) }' "$results"

#!/usr/bin/env bash
# Compares counts with limits, a line for each, and ends with a line "N passed, N failed".
#
#   compare.sh LIMITS COUNTS     limits.txt, and what count.sh and module.sh print
#
# limits.txt says what a limit is. What has been counted for the library but has no limit fails, and so does a limit
# whose row has not been counted.
set -euo pipefail

awk '
  FILENAME == ARGV[1] {
    sub(/#.*/, "")
    if (NF == 4) limits[$1 " " $2 " " $3] = $4
    next
  }
  # The first case of a row is what the others are compared with.
  $3 == "operations" { if (!($1 in baseline)) baseline[$1] = $1 " " $2; next }
  { values[$1 " " $2 " " $3] = $4 }
  $2 ~ /^library/ { counters[++count] = $1 " " $2 " " $3 }

  function print_line(verdict, what, value) {
    printf "%-12s %-50s %12.1f of %12s\n", verdict, what, value, what in limits ? limits[what] : "nothing"
  }
  function fail(verdict, what, value) {
    ++failed
    print_line(verdict, what, value)
  }
  function over_baseline(what,   word) {
    split(what, word, " ")
    if (word[3] != "instructions" || !(word[1] in baseline)) return values[what]
    return values[what] - values[baseline[word[1]] " instructions"]
  }
  function check(what,   value) {
    value = over_baseline(what)
    if (!(what in limits)) {
      if (value != 0) fail("no limit", what, value)
    } else if (value > limits[what]) {
      fail("FAILED", what, value)
    } else {
      ++passed
      print_line("held", what, value)
    }
  }
  # A system call that is made no more has no count.
  function check_uncounted(what,   word) {
    split(what, word, " ")
    if (word[3] ~ /^call:/ && (word[1] " " word[2] " instructions") in values) check(what)
    else fail("not counted", what, 0)
  }

  END {
    for (number = 1; number <= count; ++number) check(counters[number])
    for (what in limits) if (!(what in values)) check_uncounted(what)
    printf "%d passed, %d failed\n", passed, failed
    exit failed > 0
  }' "$1" "$2"

#!/usr/bin/env bash
# Makes a table of how costs grow.
#
#   growth.sh text|markdown RESULTS
#
# The exponent is that between the last two numbers: 0 where the cost stays, 1 where it grows as the number does. Of
# threads, all of them do 500 operations each; what is told is how often they waited for a lock.
set -euo pipefail

awk -v form="$1" '
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
  function cell(number, value) { return sprintf(form == "markdown" ? "%d: %.0f |" : "%6d: %-11.0f", number, value) }
  function print_row(row,   parts, number, index_, cells) {
    parts = split(numbers[row], number, " ")
    cells = ""
    for (index_ = 1; index_ <= parts; ++index_) cells = cells " " cell(number[index_], cost[row, number[index_]])
    printf form == "markdown" ? "| %s |%s %s |\n" : "%-29s%s exponent %s\n", row, cells,
           exponent(row, number[parts - 1], number[parts])
  }
  END {
    if (form == "markdown") print "| what | | | | | | exponent |\n|---|--:|--:|--:|--:|--:|--:|"
    for (row = 1; row <= count; ++row) print_row(rows[row])
  }' "$2"

#!/usr/bin/env bash
# Makes a table of what was measured.
#
#   table.sh text|markdown RESULTS
#
# Instructions are over those of the row's first subject, and times are ratios to its own in the same repetition: the
# median, and the quartiles in brackets.
set -euo pipefail

form=$1
results=$2
here=$(dirname "${BASH_SOURCE[0]}")

awk -v form="$form" '
  FILENAME == ARGV[1] {
    sub(/#.*/, "")
    if (NF == 4) limits[$1 " " $2 " " $3] = $4
    next
  }
  { case_ = $1 " " $2 }
  !(case_ in seen) { seen[case_]; if (!($1 in members)) rows[++row_count] = $1; members[$1] = members[$1] " " $2 }
  $3 == "operations" || $3 == "bytes" || $3 == "nanoseconds" { if (!($1 in baseline)) baseline[$1] = case_ }
  $3 == "ratio" { ratio[case_] = sprintf("%.2f (%.2f-%.2f)", $5, $4, $6); next }
  $3 ~ /^call:/ { add_call(case_, sprintf("%s %g", substr($3, 6), $4)); next }
  { value[case_ " " $3] = $4 }

  function add_call(case_, call) { calls[case_] = calls[case_] == "" ? call : calls[case_] ", " call }
  function number(text,   digits) {
    if (text == "") return ""
    if (text + 0 >= 100 || text + 0 <= -100) text = sprintf("%.0f", text)
    else text = sprintf("%.1f", text)
    sub(/\.0$/, "", text)
    while (match(text, /[0-9][0-9][0-9][0-9]($|,)/)) text = substr(text, 1, RSTART) "," substr(text, RSTART + 1)
    return text
  }
  function instructions(row, who,   what) {
    what = row " " who " instructions"
    if (!(what in value)) return ""
    if (baseline[row] == row " " who) return number(value[what])
    return number(value[what] - value[baseline[row] " instructions"])
  }
  function asked(what) { return what in value && value[what] > 0 ? sprintf("%g", value[what]) : "" }
  function line(row, who,   case_, limit) {
    case_ = row " " who
    limit = limits[case_ " instructions"]
    if (limit == "") limit = limits[case_ " bytes"]
    print_line(row, who, instructions(row, who), number(limit), asked(case_ " allocations"), asked(case_ " locks"),
               calls[case_], ratio[case_], number(value[case_ " nanoseconds"]), number(value[case_ " bytes"]))
  }
  function print_line(row, who, over, limit, allocations, locks, called, times, nanoseconds, bytes) {
    if (form == "markdown")
      printf "| %s | %s | %s | %s | %s | %s | %s | %s | %s | %s |\n", row, who, over, limit, allocations, locks,
             called, times, nanoseconds, bytes
    else
      printf "%-19s %-16s %12s %9s %6s %5s %19s %9s %9s  %s\n", row, who, over, limit, allocations, locks,
             times, nanoseconds, bytes, called
  }

  END {
    print_line("row", "who", "instructions", "limit", "allocations", "locks", "system calls", "time", "ns", "bytes")
    if (form == "markdown") print "|---|---|--:|--:|--:|--:|---|--:|--:|--:|"
    for (r = 1; r <= row_count; ++r) {
      count = split(members[rows[r]], member, " ")
      for (m = 1; m <= count; ++m) line(rows[r], member[m])
    }
  }' "$here/limits.txt" "$results"

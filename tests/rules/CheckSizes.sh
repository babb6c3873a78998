#!/usr/bin/env bash
# Holds sources, headers and functions to the lengths that CONTRIBUTING.md names. A test may be longer than what it
# tests, since it contains its table of cases; a help text is as long as it has to be.
# usage: CheckSizes.sh PROJECT_FOLDER
set -euo pipefail

rules=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$1"

sources() {
  find Common companion logging tools examples tests bench -type f \( -name '*.h' -o -name '*.cpp' \) | LC_ALL=C sort
}

# too_long: reads "PLACE LINES", prints those above what is allowed there, and fails if there are any or none at all.
too_long() {
  awk -v unit="$1" -v in_source="$2" -v in_header="$3" -v in_tests="$4" '
    function allowed() { return $1 ~ /^tests\// ? in_tests : $1 ~ /\.h(:|$)/ ? in_header : in_source }
    $2 > allowed() { printf "%s: a %s of %d lines; %d are allowed\n", $1, unit, $2, allowed(); failed = 1 }
    END {
      if (NR == 0) print "no " unit "s were found"
      else if (!failed) print NR " " unit "s are short enough"
      exit failed || NR == 0
    }'
}

mapfile -t files < <(sources)
status=0
awk 'FNR == 1 && NR > 1 { print file, lines } { file = FILENAME; lines = FNR } END { if (NR) print file, lines }' \
  "${files[@]}" </dev/null | too_long file 320 220 400 || status=1
awk -f "$rules/FunctionLengths.awk" "${files[@]}" </dev/null |
  grep -vE '^tools/[^/]+/Help\.cpp:' | too_long function 40 40 50 || status=1
exit "$status"

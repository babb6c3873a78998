#!/usr/bin/env bash
# Runs the test programs of a Windows build under Wine, each in one process, since each start costs seconds.
# Ends with the totals; fails if a test failed or a program did not come to its end.
# usage: RunPrograms.sh BUILD_FOLDER [PROGRAM...]
set -euo pipefail

build=$(cd "$1" && pwd)
shift
patience=600 # seconds for a program

export WINEPREFIX=$build/wine WINEARCH=win64 WINEDEBUG=-all
# Without these Wine would offer to download parts that nothing here needs.
export WINEDLLOVERRIDES="mscoree=;mshtml="
unset DISPLAY

results=$build/test-results
rm -rf "$results"
mkdir -p "$results"
trap 'wineserver -k || true' EXIT

if [ $# = 0 ]; then
  mapfile -t programs <"$build/test-programs.txt"
else
  programs=("$@")
fi

# The sum of an attribute over all suites of all results.
sum() {
  cat "$results"/*.xml 2>/dev/null | sed -n "s/.*<testsuite .* $1=\"\([0-9]*\)\".*/\1/p" |
    awk '{ sum += $1 } END { print sum + 0 }'
}

broken=0
# run PROGRAM: the results lie in a file named after it, if it came to its end.
run() {
  local program=$1 status=0
  echo "--- $program"
  (cd "$build/bin" &&
    timeout "$patience" wine "$program.exe" --gtest_brief=1 "--gtest_output=xml:../test-results/$program.xml") \
    </dev/null || status=$?
  [ -s "$results/$program.xml" ] && return
  echo "$program did not come to its end (exit code $status)"
  broken=$((broken + 1))
}

wineboot --init >/dev/null 2>&1
for program in "${programs[@]}"; do
  run "$program"
done

tests=$(sum tests)
failed=$(($(sum failures) + $(sum errors)))
left_out=$(($(sum skipped) + $(sum disabled)))
[ "$left_out" = 0 ] || echo "$left_out not run"
echo "$((tests - failed - left_out)) passed, $((failed + broken)) failed"
[ "$((failed + broken))" = 0 ] && [ "$tests" -gt 0 ]

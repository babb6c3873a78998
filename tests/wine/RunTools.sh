#!/usr/bin/env bash
# Runs the scripts that test the tools, with the programs of a Windows build under Wine: those tests that
# tool-tests.txt names. Leaves the results in BUILD_FOLDER/test-results/tools.xml; fails if a test failed.
# usage: RunTools.sh BUILD_FOLDER
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "$1" && pwd)
export scripts=$here/../tool
export tools=$build/wine-tools outcomes=$build/wine-tools/outcomes
export mercy=${VELSOCK_WINE_MERCY:-10} # seconds to end in when asked to

export WINEPREFIX=$build/wine WINEARCH=win64 WINEDEBUG=-all
# Without these, Wine would offer to download parts that nothing here needs.
export WINEDLLOVERRIDES="mscoree=;mshtml="
export VELSOCK_TEST_ON_WINDOWS=yes
unset DISPLAY

# The scripts start the tools by these, which have their names.
make_tool() {
  printf '%s\n' '#!/bin/sh' "exec timeout --kill-after=$mercy 60 wine '$build/bin/$1.exe' \"\$@\"" >"$tools/$1"
  chmod +x "$tools/$1"
}

# Prints a line for each test: script, kind of sockets, test.
list_tests() {
  local script sockets tests test
  while read -r script sockets tests; do
    [[ $script != '#'* ]] || continue
    for test in $tests; do
      grep -q "^$test()" "$scripts/$script.sh" || {
        echo "$script has no $test" >&2
        return 1
      }
      echo "$script $sockets $test"
    done
  done <"$here/tool-tests.txt"
}

# The words of a script before the test's name.
words_of() {
  case $1 in
    VelSockResolve*) printf '%s\n' "$tools/velsock-resolve" /nowhere ;;
    VelSockTrace*) printf '%s\n' "$tools/velsock-trace" "$tools/velsock-cat" ;;
    *)
      echo "$tools/velsock-cat"
      [ "$2" = - ] || echo "$2"
      ;;
  esac
}

# run SCRIPT SOCKETS TEST: what it says is shown if it fails. One that the system does not permit is not run.
run() {
  local words status=0 name="$1.$2.$3"
  mapfile -t words < <(words_of "$1" "$2")
  timeout --kill-after="$mercy" 120 "$scripts/$1.sh" "${words[@]}" "$3" </dev/null >"$tools/$name.log" 2>&1 || status=$?
  echo "$status $name" >>"$outcomes"
  [ "$status" = 0 ] || [ "$status" = 77 ] || printf 'FAILED %s (exit code %s)\n%s\n' "$name" "$status" "$(cat "$tools/$name.log")"
}
export -f words_of run

end_wine() {
  timeout --kill-after="$mercy" 60 wineserver -k
}

# Wine sometimes misses an event: what failed is run once more, alone. Linux gives the same tests one chance.
run_failed_again() {
  local again test script sockets
  mapfile -t again < <(awk '$1 != 0 && $1 != 77 { print $2 }' "$outcomes")
  sed -i -E '/^(0|77) /!d' "$outcomes"
  for test in "${again[@]}"; do
    echo "$test is run again"
    IFS=. read -r script sockets test <<<"$test"
    run "$script" "$sockets" "$test"
  done
}

rm -rf "$tools"
mkdir -p "$tools" "$build/test-results"
for tool in velsock-cat velsock-resolve velsock-trace; do make_tool "$tool"; done
list_tests >"$tools/tests"
trap 'end_wine || true' EXIT
timeout --kill-after="$mercy" 300 wineboot --init >/dev/null 2>&1
# Otherwise it would end, and be started again, between two programs. Its services keep the standard streams of the
# first one.
timeout --kill-after="$mercy" 60 wineserver -p || true
"$tools/velsock-cat" --version </dev/null >/dev/null 2>&1

xargs -P "$(nproc)" -L 1 bash -c 'run "$@"' run <"$tools/tests"
run_failed_again
failed=$(grep -cvE '^(0|77) ' "$outcomes" || true)
skipped=$(grep -c '^77 ' "$outcomes" || true)
echo "<testsuite name=\"tools\" tests=\"$(wc -l <"$outcomes")\" failures=\"$failed\" skipped=\"$skipped\">" \
  >"$build/test-results/tools.xml"
echo "--- tools under Wine: $(wc -l <"$tools/tests") tests, $failed failed, $skipped not run"
[ "$failed" = 0 ]

#!/usr/bin/env bash
# Runs the test programs of a Windows build under Wine, each in one process, since each start costs seconds.
# Leaves a file of results for each in BUILD_FOLDER/test-results, and the calls' results in answers.tsv
# there; fails if a test failed or a program did not finish.
# usage: RunPrograms.sh BUILD_FOLDER [PROGRAM...]
set -euo pipefail

build=$(cd "$1" && pwd)
shift
export results=$build/test-results
export patience=${VELSOCK_WINE_PATIENCE:-300} # seconds for a program
# Wine sometimes hangs, its own commands included, and then hears no polite request.
export mercy=${VELSOCK_WINE_MERCY:-10} # seconds to end in when asked to

export WINEPREFIX=$build/wine WINEARCH=win64 WINEDEBUG=-all
# Without these, Wine would offer to download parts that nothing here needs.
export WINEDLLOVERRIDES="mscoree=;mshtml="
export VELSOCK_ANSWERS=../test-results/answers.tsv
unset DISPLAY

rm -rf "$results"
mkdir -p "$results"
trap 'end_wine || true' EXIT

if [ $# = 0 ]; then
  mapfile -t programs <"$build/test-programs.txt"
else
  programs=("$@")
fi

end_wine() {
  timeout --kill-after="$mercy" 60 wineserver -k
}

in_own_network() {
  if [ "$(id -u)" = 0 ]; then unshare --net "$@"; else unshare --net --map-root-user "$@"; fi
}

# Wine creates sockets in its server, so each network has its own server and folder.
in_network_with_groups() {
  # shellcheck disable=SC2016  # for the inner shell
  WINEPREFIX=$WINEPREFIX-$program in_own_network sh -c '
    ip link set lo up multicast on
    ip route add 224.0.0.0/4 dev lo
    ip -6 route add ff00::/8 dev lo
    "$@"
    status=$?
    timeout --kill-after="$mercy" 60 wineserver -k
    exit $status' sh "$@"
}

# start PROGRAM: the tests of the built module, the companion and the examples send to groups, which must not leave the
# machine. Where the system lets them have no network of their own, they leave that out.
start() {
  local program=$1 command
  command=(timeout --kill-after="$mercy" "$patience" wine "$program.exe"
    "--gtest_output=xml:../test-results/$program.xml")
  if [[ $program =~ ^(loopback|companion|example)_tests$ ]] && in_own_network true; then
    in_network_with_groups "${command[@]}"
  else
    "${command[@]}"
  fi
}

# What timeout ends with when the time was over, and when it had to kill.
reason_of() {
  case $1 in
    124 | 137) echo "ran longer than its $patience seconds and was ended" ;;
    *) echo "did not come to its end (exit code $1)" ;;
  esac
}

# the_test_within LOG: the one that began last, if it did not end.
the_test_within() {
  tr -d '\r' <"$1" |
    awk '/^\[ RUN +\] / { test = ", in " $4 } /^\[ +(OK|FAILED|SKIPPED) +\] / { test = "" } END { printf "%s", test }'
}

# without_successes LOG
without_successes() {
  tr -d '\r' <"$1" | grep -vE '^\[ +(RUN|OK) +\] |^\[-+\]|^$'
}

# run PROGRAM: shows its output when it has ended. One that was aborted counts as a failed test.
run() {
  local program=$1 status=0
  start "$program" </dev/null >"$results/$program.log" 2>&1 || status=$?
  if [ ! -s "$results/$program.xml" ]; then
    echo "$program $(reason_of "$status")$(the_test_within "$results/$program.log")" >>"$results/$program.log"
    echo "<testsuite name=\"$program\" tests=\"1\" failures=\"1\">" >"$results/$program.xml"
    status=1
  fi
  printf -- '--- %s\n%s\n' "$program" "$(without_successes "$results/$program.log")"
  return $((status != 0))
}
export -f in_own_network in_network_with_groups start reason_of the_test_within without_successes run

if ! timeout --kill-after="$mercy" 300 wineboot --init >/dev/null 2>&1; then
  echo "Wine could not be set up within 300 seconds" >&2
  exit 1
fi
cd "$build/bin"
printf '%s\n' "${programs[@]}" | xargs -P "$(nproc)" -I '{}' bash -c 'run {}'

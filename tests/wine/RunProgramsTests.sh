#!/usr/bin/env bash
# What runs programs under Wine ends those that hang, and says so; with programs in Wine's place that do what these
# tests want.
# usage: RunProgramsTests.sh TEST
set -euo pipefail

run=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/RunPrograms.sh
build=$(mktemp -d)
trap 'rm -rf "$build"' EXIT
mkdir "$build/bin" "$build/fake"
export PATH="$build/fake:$PATH" VELSOCK_WINE_PATIENCE=1 VELSOCK_WINE_MERCY=1

fail() {
  echo "$1" >&2
  exit 1
}

# put COMMAND LINE...
put() {
  printf '%s\n' '#!/usr/bin/env bash' "${@:2}" >"$build/fake/$1"
  chmod +x "$build/fake/$1"
}
put wineserver true
put wineboot true

TestAProgramThatEndsIsShown() {
  # shellcheck disable=SC2016  # for the program
  put wine 'for word; do case $word in --gtest_output=xml:*) echo "<testsuite tests=\"2\"/>" >"${word#*xml:}" ;; esac; done' \
    'printf "[ RUN      ] Cat.Purrs\r\n[       OK ] Cat.Purrs (1 ms)\r\n"' 'echo all is well'
  local said
  said=$("$run" "$build" unit_tests)
  [[ $said == *"all is well"* ]] || fail "it was not shown: $said"
  [[ $said != *Purrs* ]] || fail "each test is shown: $said"
  grep -q 'tests="2"' "$build/test-results/unit_tests.xml"
}

# expect_failure REASON: it counts as a failed test.
expect_failure() {
  local said
  if said=$("$run" "$build" unit_tests 2>&1); then fail "nobody notices: $said"; fi
  [[ $said == *"$1"* ]] || fail "it fails for another reason: $said"
  grep -q 'tests="1" failures="1"' "$build/test-results/unit_tests.xml"
}

TestAProgramThatIsAbortedHasFailed() {
  put wine 'exit 3'
  expect_failure 'unit_tests did not come to its end (exit code 3)'
}

TestAProgramThatHangsIsEnded() {
  put wine 'printf "[ RUN      ] Cat.Purrs\r\n[       OK ] Cat.Purrs (1 ms)\r\n[ RUN      ] Cat.Sleeps\r\n"' \
    'exec sleep 100'
  expect_failure 'unit_tests ran longer than its 1 seconds and was ended, in Cat.Sleeps'
}

TestAProgramThatIsAbortedBetweenTestsNamesNone() {
  put wine 'printf "[ RUN      ] Cat.Purrs\r\n[       OK ] Cat.Purrs (1 ms)\r\n"' 'exit 3'
  expect_failure 'unit_tests did not come to its end (exit code 3)'
  if grep 'in Cat' "$build/test-results/unit_tests.log"; then fail "it names a test that had ended"; fi
}

TestAProgramThatWillNotEndIsKilled() {
  put wine 'trap "" TERM' 'while :; do sleep 0.1; done'
  expect_failure 'unit_tests ran longer than its 1 seconds and was ended'
}

TestAWineThatCannotBeSetUpIsAFailure() {
  put wineboot 'exit 1'
  if "$run" "$build" unit_tests 2>"$build/said"; then fail "nobody notices"; fi
  grep -q 'Wine could not be set up' "$build/said"
}

"$1"

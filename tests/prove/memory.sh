#!/usr/bin/env bash
# The unit tests under valgrind: no access outside of what is allocated, no use of what was never set, no block that
# nobody owns, no descriptor that is left open.
# A planted block that nobody owned was noticed.
# usage: memory.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

programs=(unit_text_tests unit_support_tests unit_limit_tests unit_socket_tests)
cmake --preset release -B "$2/release" >/dev/null
cmake --build "$2/release" --parallel "$(nproc)" --target "${programs[@]}" >/dev/null

# The programs have an operator new of their own, which must not be replaced; their threads wait for each other.
options=(--quiet --soname-synonyms=somalloc=nouserintercepts --fair-sched=yes --leak-check=full --track-fds=yes
  --error-exitcode=9)

# left_open LOG: the descriptors that the program has opened itself.
left_open() {
  awk '/Open (file descriptor|AF_)/ { line = $0; getline; if ($0 !~ /inherited from parent/) print line }' "$1"
}

tests=0
for program in "${programs[@]}"; do
  log=$2/prove/$program.valgrind
  if ! valgrind "${options[@]}" "$2/release/bin/$program" --gtest_brief=1 >"$log" 2>&1 || [ -n "$(left_open "$log")" ]; then
    cat "$log"
    echo "$program failed under valgrind"
    exit 1
  fi
  tests=$((tests + $(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\.$/\1/p' "$log")))
done
echo "$tests unit tests under valgrind: 0 errors, 0 leaks, 0 descriptors left open"

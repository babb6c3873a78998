#!/usr/bin/env bash
# A test that fails names its file: the name of its suite begins with that of the file, and with that of no other file
# of the same program that fits better. Files with tests, and no others, end in "Tests".
# usage: CheckTestNames.sh PROJECT_FOLDER
set -euo pipefail

cd "$1/tests"
mapfile -t files < <(find . -type f \( -name '*.cpp' -o -name '*.h' \) -printf '%P\n' | LC_ALL=C sort)
awk '
  # What only one system can play belongs to the same program.
  function program(file) { sub(/(\/(posix|windows))?\/[^\/]*$/, "", file); return file }
  function stem(file) { sub(/.*\//, "", file); sub(/Tests\.cpp$/, "", file); return file }
  function is_named_for_tests(file) { return file ~ /Tests\.cpp$/ }
  function complain(text) { print "tests/" text; failed = 1 }

  FNR == 1 && is_named_for_tests(FILENAME) { stems[program(FILENAME)] = stems[program(FILENAME)] " " stem(FILENAME) }
  FNR == 1 { unfinished = "" }
  /^(TYPED_)?TEST(_F|_P)?\(/ || unfinished {
    unfinished = unfinished $0
    if (unfinished !~ /,/) next
    suite = unfinished
    unfinished = ""
    gsub(/^[A-Z_]*\([ ]*|[ ]*,.*/, "", suite)
    suites[FILENAME] = suites[FILENAME] " " suite
    tests++
  }

  function check_suite(file, suite, others, count, i) {
    if (index(suite, stem(file)) != 1)
      return complain(file ": the suite " suite " must begin with " stem(file))
    count = split(stems[program(file)], others)
    for (i = 1; i <= count; i++) {
      if (length(others[i]) > length(stem(file)) && index(suite, others[i]) == 1)
        return complain(file ": the suite " suite " belongs to " others[i] "Tests.cpp by its name")
    }
  }
  function check_file(file, names, count, seen, i) {
    if (!is_named_for_tests(file)) return complain(file ": has tests, so its name must end in Tests.cpp")
    count = split(suites[file], names)
    for (i = 1; i <= count; i++) if (!seen[names[i]]++) check_suite(file, names[i])
  }
  END {
    for (i = 1; i < ARGC; i++) {
      if (ARGV[i] in suites) check_file(ARGV[i])
      else if (is_named_for_tests(ARGV[i])) complain(ARGV[i] ": has no tests, though it is named for them")
    }
    if (tests == 0) print "no tests were found"
    else if (!failed) print tests " tests name their files"
    exit failed || tests == 0
  }' "${files[@]}" </dev/null

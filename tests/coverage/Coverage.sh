#!/usr/bin/env bash
# Runs the test programs of a build that measures coverage, and holds what they did not reach of the library to gaps.tsv.
#
# The branches are those of clang++: each condition that the source has, true and false. g++ counts what it generates, so
# that nearly every call has a branch for an exception, and nearly every delete one for a null pointer.
# usage: Coverage.sh BUILD_FOLDER PROGRAM...
set -euo pipefail

build=$1
shift
profiles=$build/profiles
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
rm -rf "$profiles"
mkdir -p "$profiles"

# Of the faults, those of the system's calls and some cancelled threads: the others take minutes and reach no more.
tests_of() {
  if [ "$1" = fault_tests ]; then echo '*SystemCallFaults*:*StormOf.LosesNothing/0'; else echo '*'; fi
}

# The counters lie in the file itself (%c), one for each module (%m): a child that ends without a word has counted, too.
objects=(-object "$build/lib/libvelsock.so")
for program in "$@"; do
  LLVM_PROFILE_FILE=$profiles/$program-%m%c.profraw "$build/bin/$program" --gtest_brief=1 --gtest_filter="$(tests_of "$program")" \
    >"$profiles/$program.log" 2>&1 || { cat "$profiles/$program.log" && exit 1; }
  objects+=(-object "$build/bin/$program")
done
llvm-profdata-19 merge -o "$profiles/all.profdata" "$profiles"/*.profraw

cd "$here/../.."
# Tests of several programs share names; it warns of these.
export_as() {
  llvm-cov-19 export "${objects[@]}" -instr-profile "$profiles/all.profdata" -format="$1" -sources Common \
    2> >(grep -v 'functions have mismatched data$' >&2)
}
export_as lcov >"$profiles/lines.info"
export_as text >"$profiles/branches.json"
PYTHONDONTWRITEBYTECODE=1 "$here/gaps.py" "$profiles/lines.info" "$profiles/branches.json"

#!/usr/bin/env bash
# Every function of the C library that the module imports either fails in the fault tests or stands in unfailing.txt,
# with the reason why it needs not.
# usage: CheckImports.sh NM MODULE FOLDER
set -euo pipefail

nm=$1 module=$2 folder=$3

imported() {
  # C++'s runtime fails by what it allocates, and the linker's weak symbols are no calls.
  "$nm" -D --undefined-only "$module" | awk '$1 == "U" { sub(/@.*/, "", $2); print $2 }' |
    grep -vE '^(_Z|__cxa_|__dynamic_cast$|_Unwind_|__(gxx|gcc)_personality)' | LC_ALL=C sort -u
}
failing() { sed -nE 's/^    \{"([a-z0-9_]+)", SystemCall::.*/\1/p' "$folder/posix/ErrorNumbers.cpp"; }
unfailing() { sed -E '/^(#|$)/d; s/ .*//' "$folder/unfailing.txt"; }
listed() { { failing; unfailing; } | LC_ALL=C sort -u; }

[ "$(failing | wc -l)" -gt 40 ] || { echo "The table of functions that fail was not found"; exit 1; }
status=0
while read -r name; do
  echo "The module imports $name: give it a row in posix/ErrorNumbers.cpp, or a reason in unfailing.txt"
  status=1
done < <(LC_ALL=C comm -23 <(imported) <(listed))
while read -r name; do
  echo "The module does not import $name, which is listed"
  status=1
done < <(LC_ALL=C comm -13 <(imported) <(listed))
[ "$status" != 0 ] || echo "$(failing | wc -l) functions fail in the tests, $(unfailing | wc -l) cannot"
exit "$status"

#!/usr/bin/env bash
# Each statement of SECURITY.md about the library names a test, and those tests exist: Suite.Test, or Script.Test for
# the functions of scripts.
# usage: CheckSecurity.sh PROJECT_FOLDER
set -euo pipefail

# shellcheck source=ExistingTests.sh
source "$(dirname "${BASH_SOURCE[0]}")/ExistingTests.sh"
cd "$1"
problems=0

problem() {
  echo "$1"
  problems=$((problems + 1))
}

existing_script_tests() {
  find tests -name '*Tests.sh' -exec grep -HoE '^Test[A-Za-z0-9]+' {} + | sed -E 's|^.*/([A-Za-z0-9]+)Tests\.sh:Test|\1.|'
}

# The statements, each on one line: items of lists, which go on in indented lines, from the first "What" on.
statements() {
  sed '1,/^## What/d' SECURITY.md | awk '/^- / { if (text) print text; text = $0; next }
    /^  / && text { text = text " " $0; next }
    { if (text) print text; text = "" }
    END { if (text) print text }'
}

declare -A exists
while read -r test; do exists[$test]=1; done < <(existing_tests && existing_script_tests)

count=0
while read -r statement; do
  count=$((count + 1))
  # A script is a test as well; that it exists is a rule for all documents.
  # shellcheck disable=SC2016  # they are the marks of code
  mapfile -t tests < <(grep -oE '`([A-Za-z0-9]+\.[A-Z][A-Za-z0-9]+|[A-Za-z/]+\.sh)`' <<<"$statement" | tr -d '`' || true)
  ((${#tests[@]} > 0)) || [[ $statement == *"no test"* ]] || problem "SECURITY.md names no test: ${statement:0:60}"
  for test in "${tests[@]}"; do
    [[ $test == *.sh || -n ${exists[$test]:-} ]] || problem "SECURITY.md: there is no test $test"
  done
done < <(statements)

((count > 0)) || problem "SECURITY.md has no statements"
((problems == 0)) || exit 1
echo "$count statements of SECURITY.md have their tests"

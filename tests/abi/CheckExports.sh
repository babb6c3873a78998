#!/usr/bin/env bash
# Compares what the shared module exports with the checked-in list.
# usage: CheckExports.sh MODULE LIST
set -euo pipefail

module=$1
list=$2

exports() {
  nm --dynamic --defined-only --without-symbol-versions --demangle "$module" | grep -v "^0* A " | sed -E 's/^[0-9a-f]+ . //' | LC_ALL=C sort -u
}

if ! difference=$(diff <(grep -v '^#' "$list" | grep -v '^$' | LC_ALL=C sort -u) <(exports)); then
  echo "The module's exports differ from the list (< listed, > exported):"
  echo "$difference"
  exit 1
fi

# A wide string in an exported signature is unsigned short; wchar_t and char16_t are 'w' and 'Ds'.
if nm --dynamic --defined-only --demangle "$module" | grep -E 'wchar_t|char16_t|std::'; then
  echo "These exported names carry a type that must not cross the boundary."
  exit 1
fi
echo "$(exports | wc -l) exported names, all listed"

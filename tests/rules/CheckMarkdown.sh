#!/usr/bin/env bash
# Documents are wrapped alike: no line is longer than 120 characters, but for tables, code and links that cannot be
# broken, and none has spaces at its end.
# usage: CheckMarkdown.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
mapfile -t files < <(find . \( -name .git -o -path ./build \) -prune -o -type f -name '*.md' -print | LC_ALL=C sort)
((${#files[@]} > 0)) || {
  echo "no documents were found"
  exit 1
}

awk '
  function complain(what) { print FILENAME ":" FNR ": " what; failed = 1 }
  FNR == 1 { in_code = 0 }
  /^ *```/ { in_code = !in_code }
  /[ \t]$/ { complain("a space at the end") }
  in_code || /^\|/ || /^    / || !/[^ ] +[^ ]/ { next }
  length($0) > 120 { complain("longer than 120 characters") }
  END { exit failed }' "${files[@]}"
echo "${#files[@]} documents are wrapped alike"

#!/usr/bin/env bash
# Documents are wrapped alike: no line is longer than 120 characters, but for tables, code and links that cannot be
# broken, and none has spaces at its end. What they link exists, and so do the sources and scripts that they name.
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
problems=0
problem() {
  echo "$1"
  problems=$((problems + 1))
}

# in_prose FILE PATTERN: what matches outside of blocks of code.
in_prose() { awk '/^ *```/ { in_code = !in_code; next } !in_code' "$1" | grep -oE "$2" || true; }

all_files=$(find . \( -name .git -o -path ./build \) -prune -o -type f -print)
for file in "${files[@]}"; do
  while read -r link; do
    link=${link#](}
    link=${link%%[#)]*}
    [[ -z $link || $link == *:* || -e $(dirname "$file")/$link ]] || problem "$file links $link, which does not exist"
  done < <(in_prose "$file" '\]\([^)]+\)')
  # shellcheck disable=SC2016  # the quotes are Markdown's
  while read -r name; do
    name=${name//\`/}
    # A standard header may be meant.
    [[ $name == *.h && $name != */* ]] || grep -q "/$name\$" <<<"$all_files" ||
      problem "$file names $name, which does not exist"
  done < <(in_prose "$file" '`[A-Za-z0-9_/.-]+\.(cpp|h|sh)`')
done
((problems == 0)) || exit 1
echo "${#files[@]} documents are wrapped alike, and what they name exists"

#!/usr/bin/env bash
# Words that could be spelled in two ways are spelled in one: timeout, initialize.
# usage: CheckSpelling.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
# Winsock's own names, which are in capitals, keep their spelling.
words='[Tt]ime-out|([Ii]nitial|[Ss]erial|[Oo]ptim|[Ss]ynchron|[Rr]andom|[Rr]ecogn|[Oo]rgan)is(e|ing|ation)'
mapfile -t files < <(find . \( -name .git -o -path ./build -o -path ./tests/rules \) -prune -o -type f \
  \( -name '*.h' -o -name '*.cpp' -o -name '*.md' -o -name '*.sh' -o -name '*.cmake' -o -name CMakeLists.txt -o -name run \) -print)
((${#files[@]} > 0)) || {
  echo "no files were found"
  exit 1
}

if grep -nE "$words" "${files[@]}"; then
  echo "these words are spelled otherwise elsewhere: timeout, initialize"
  exit 1
fi
echo "${#files[@]} files spell alike"

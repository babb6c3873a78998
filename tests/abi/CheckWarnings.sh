#!/usr/bin/env bash
# Compiles headers alone, and a source that uses them, with the warnings that clients may have, without producing code:
# with every g++ and clang++ that is installed.
# usage: CheckWarnings.sh SOURCE INCLUDE_FOLDER... < LIST_OF_HEADERS
set -euo pipefail

uses=$1
shift
includes=()
for folder in "$@"; do includes+=(-I "$folder"); done
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Werror)

mapfile -t headers
((${#headers[@]} > 0)) || {
  echo "no headers were named"
  exit 1
}

# One of each version, whatever its names.
compilers() {
  local name path
  for name in g++ g++-{9..15} clang++ clang++-{14..21}; do
    path=$(command -v "$name") && echo "$(realpath "$path") $name"
  done | sort -u -k 1,1 | cut -d ' ' -f 2
}

# compiles COMPILER STANDARD NAME: the source is read.
compiles() {
  "$1" -std="$2" -fsyntax-only -x c++ "${warnings[@]}" "${includes[@]}" - || {
    echo "$1 does not compile as $2: $3"
    exit 1
  }
}

found=()
for compiler in $(compilers); do
  for header in "${headers[@]}"; do
    compiles "$compiler" c++17 "$header" <<<"#include <$header>"
  done
  compiles "$compiler" c++17 'the uses' <"$uses"
  compiles "$compiler" c++20 'the uses' <"$uses"
  found+=("$compiler")
done
((${#found[@]} > 0)) || {
  echo "no compiler was found"
  exit 1
}
echo "${#headers[@]} headers and their uses compile with ${found[*]}"

#!/usr/bin/env bash
# Compiles every header of the companion alone, with the warnings that its users may have, without producing code: with
# the build's compiler, and with every g++ and clang++ that is installed.
# usage: CheckHeaders.sh COMPILER INCLUDE_FOLDER... < LIST_OF_HEADERS
set -euo pipefail

compilers=("$1")
for name in g++ g++-{12..15} clang++ clang++-{14..19}; do
  if command -v "$name" >/dev/null; then compilers+=("$name"); fi
done
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

compiles() {
  local compiler=$1 standard=$2 header=$3 source
  source="#include <$header>"$'\n'"#include <$header>"$'\n'
  if ! printf '%s' "$source" |
    "$compiler" -std="$standard" -fsyntax-only -x c++ "${warnings[@]}" "${includes[@]}" -; then
    echo "$compiler does not compile as $standard: $header"
    exit 1
  fi
}

mapfile -t compilers < <(for compiler in "${compilers[@]}"; do realpath "$(command -v "$compiler")"; done | sort -u)
for compiler in "${compilers[@]}"; do
  for header in "${headers[@]}"; do
    compiles "$compiler" c++17 "$header"
    compiles "$compiler" c++20 "$header"
  done
done
echo "${#headers[@]} headers compile with ${compilers[*]}"

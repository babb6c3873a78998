#!/usr/bin/env bash
# Builds the library in the ways that its users do, and holds what a transfer costs in each against the limits.
#
#   builds.sh PROGRAMS FOLDER     the folder of the benchmarks' programs, and one for the builds
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
programs=$(cd "$1" && pwd)
folder=$2
passed=0
failed=0

# check NAME OPTION...: options of CMake.
check() {
  local name=$1 totals
  shift
  cmake -G Ninja -S "$here/.." -B "$folder/$name" -D VELSOCK_TOOLS=OFF -D VELSOCK_INSTALL=OFF "$@" >/dev/null
  cmake --build "$folder/$name" --target velsock --parallel "$(nproc)" >/dev/null
  for row in send receive; do
    LD_LIBRARY_PATH="$folder/$name/lib" "$here/count.sh" "$programs/bench_counts" "$row"
  done >"$folder/$name/counts"
  grep -E "^(#|send|receive) " "$here/limits.txt" >"$folder/$name/limits"
  "$here/compare.sh" "$folder/$name/limits" "$folder/$name/counts" >"$folder/$name/lines" || true
  echo "$name"
  sed '$d' "$folder/$name/lines"
  read -ra totals <<<"$(tail -n 1 "$folder/$name/lines")"
  passed=$((passed + totals[0]))
  failed=$((failed + totals[2]))
}

check plain
check MinSizeRel -D CMAKE_BUILD_TYPE=MinSizeRel
check RelWithDebInfo -D CMAKE_BUILD_TYPE=RelWithDebInfo
check own-flags -D CMAKE_BUILD_TYPE=None -D CMAKE_CXX_FLAGS=-O2

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]

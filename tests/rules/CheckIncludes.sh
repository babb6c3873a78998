#!/usr/bin/env bash
# A source includes its own header before all others, so that each header is compiled once with nothing before it. The
# formatter keeps the order of the others, and the own header's place only where that is in quotes.
# usage: CheckIncludes.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
sources=0
problems=0

# The header of the same name beside the source, or the one that declares what the source defines.
own_header_of() {
  local name header
  name=$(basename "$1" .cpp).h
  for header in "$(dirname "$1")/$name" Common/*/{include,internal}/"$(basename "$(dirname "$1")")/$name" \
    Common/Socket/include/VelNet/"$name" logging/include/VelLogging/"$name"; do
    [[ $header != *VelNet* || $1 == Common/Socket/* ]] || continue
    [[ $header != logging/include/* || $1 == logging/* ]] || continue
    if [[ -e $header ]]; then echo "$header"; fi
  done
}

while read -r file; do
  mapfile -t own < <(own_header_of "$file")
  ((${#own[@]} > 0)) || continue
  sources=$((sources + 1))
  first=$(sed -nE '/^#include/{s/^#include "([^"]*)".*/\1/p;q}' "$file")
  [[ -n $first && " ${own[*]/%/ }" == *"/$first "* ]] || {
    echo "$file must include its own header first, in quotes"
    problems=$((problems + 1))
  }
done < <(find Common logging tools examples bench -type f -name '*.cpp' | LC_ALL=C sort)

((sources > 0)) || {
  echo "no source with a header of its own was found"
  exit 1
}
((problems == 0)) || exit 1
echo "$sources sources include their own headers first"

#!/usr/bin/env bash
# Holds the sources to the rules of the house: which floor may include which, where system headers and
# platform conditionals may stand, and that a public header includes public headers only.
# usage: CheckFloors.sh PROJECT_FOLDER < LIST_OF_PUBLIC_HEADERS
set -euo pipefail

cd "$1"
mapfile -t public_headers
problems=0
files=0

problem() {
  echo "$1"
  problems=$((problems + 1))
}

includes_of() { sed -nE 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*[<"]([^>"]+)[>"].*/\1/p' "$1"; }

is_public() {
  local header
  for header in "${public_headers[@]}"; do [[ $header == "$1" ]] && return 0; done
  return 1
}

# The C++ standard library's headers have neither a folder nor an ending.
is_standard() { [[ $1 != */* && $1 != *.* ]]; }

may_include() {
  local file=$1 header=$2
  is_standard "$header" && return 0
  [[ $header != */* && -e $(dirname "$file")/$header ]] && return 0  # a neighbour
  case $file in
    Common/platform/include/*) [[ $header == Platform/* ]] ;;
    Common/platform/posix/* | Common/platform/windows/*) [[ $header != Vel* && $header != Socket/* ]] ;;
    Common/support/*) [[ $header =~ ^(Platform|VelBase|VelSynch|VelResource|VelLog|VelRegistry)/ ]] ;;
    Common/Socket/include/*) is_public "$header" ;;
    Common/Socket/Socket/*) [[ $header =~ ^(Platform|Socket|VelBase|VelSynch|VelResource|VelLog|VelRegistry|VelNet)/ ]] ;;
    tools/* | examples/*) is_public "$header" || [[ $header != */* || $header == sys/* ]] ;;
    *) return 0 ;;
  esac
}

sources() { find Common tools examples -type f \( -name '*.h' -o -name '*.cpp' \) 2>/dev/null | LC_ALL=C sort; }

while read -r file; do
  files=$((files + 1))
  while read -r header; do
    may_include "$file" "$header" || problem "$file must not include $header"
  done < <(includes_of "$file")

  case $file in
    Common/platform/posix/* | Common/platform/windows/* | Common/support/include/VelBase/Export.h) ;;
    *)
      if grep -nE '^[[:space:]]*#[[:space:]]*(if|ifdef|ifndef|elif)' "$file"; then
        problem "$file must not hold a conditional"
      fi
      ;;
  esac
done < <(sources)

for header in "${public_headers[@]}"; do
  path=$(find Common/*/include -path "*/include/$header")
  [[ -n $path ]] || problem "the public header $header does not exist"
  while read -r included; do
    is_standard "$included" || is_public "$included" ||
      problem "$header is public and must not include $included, which is not"
  done < <(includes_of "$path")
done

((files > 0)) || problem "no sources were found"
((problems == 0)) || exit 1
echo "$files sources keep to their floors"

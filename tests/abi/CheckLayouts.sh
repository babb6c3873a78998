#!/usr/bin/env bash
# Compares what clients are compiled against - layouts, virtual tables, signatures, numbers - with the checked-in
# description. Whoever changes it in a way that compiled clients survive makes the description again.
# usage: CheckLayouts.sh check|make COMPILER DESCRIPTION INCLUDE_FOLDER...
set -euo pipefail

command=$1
compiler=$2
description=$3
shift 3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

includes=()
for include in "$@"; do includes+=(-I "$include"); done
# Otherwise a class with virtual functions is described only where its virtual table is.
"$compiler" -std=c++17 -g -femit-class-debug-always "-ffile-prefix-map=$here=." -fPIC -shared -fvisibility=hidden \
  -Wl,--unresolved-symbols=ignore-all "${includes[@]}" -o "$folder/libsurface.so" "$here/Surface.cpp"

case $command in
  make)
    abidw --no-comp-dir-path --no-corpus-path --no-show-locs --no-elf-needed --out-file "$description" "$folder/libsurface.so"
    ;;
  check)
    abidiff --harmless --no-show-locs "$description" "$folder/libsurface.so"
    echo "$(grep -c '<class-decl' "$description") classes as described"
    ;;
esac

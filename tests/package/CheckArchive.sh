#!/usr/bin/env bash
# Unpacks an archive, moves what was in it, and examines the files: nothing knows where it was built or unpacked, the
# tools find the library, and the compiler's protections are in.
# usage: CheckArchive.sh ARCHIVE FOLDER PROJECT_FOLDER [windows]
# FOLDER is made anew and keeps the moved tree.
set -euo pipefail

archive=$1
folder=$2
project=$3
system=${4-linux}

fail() {
  echo "$1" >&2
  exit 1
}

unpack_and_move() {
  local unpacked
  rm -rf "$folder" "$folder.unpacked"
  mkdir -p "$folder.unpacked"
  case $archive in
    *.zip) unzip -q "$archive" -d "$folder.unpacked" ;;
    *) tar -xf "$archive" -C "$folder.unpacked" ;;
  esac
  unpacked=$(echo "$folder.unpacked"/*)
  mv "$unpacked" "$folder"
  rmdir "$folder.unpacked"
}

check_places() {
  if grep -rlF -e "$project" -e "$folder.unpacked" "$folder"; then fail "These files know where they were built"; fi
}

# has FILE WHAT PATTERN COMMAND...: the command's output about the file has a line like the pattern.
has() {
  local file=$1 what=$2 pattern=$3
  shift 3
  "$@" "$file" | grep -E "$pattern" >/dev/null || fail "$file: no $what"
}

check_protections() {
  local files=("$folder/lib/libvelsock.so" "$folder"/lib/*.a "$folder"/bin/*)
  [ "$system" != windows ] || files=("$folder/bin/VelSock.dll" "$folder"/bin/velsock-*.exe)
  "$(dirname "${BASH_SOURCE[0]}")/CheckProtections.sh" --installed "${files[@]}"
}

check_names() {
  has "$folder/lib/libvelsock.so" "own name" 'SONAME.*\[libvelsock\.so\.1\]' readelf -dW
  has "$folder/lib/libvelsock.so" "symbol versions" '@@VELSOCK_1\.0$' nm --dynamic --defined-only
}

check_tools() {
  local tool
  for tool in velsock-cat velsock-resolve velsock-trace; do
    "$folder/bin/$tool" --version >/dev/null || fail "$tool does not run where it was moved to"
    [ -s "$folder/share/man/man1/$tool.1" ] || fail "$tool has no manual page"
    [ -s "$folder/share/bash-completion/completions/$tool" ] || fail "$tool is not completed"
  done
}

unpack_and_move
check_places
check_protections
if [ "$system" = linux ]; then
  check_names
  check_tools
fi
echo "$(basename "$archive"): $(find "$folder" -type f | wc -l) files, moved, protected"

#!/usr/bin/env bash
# Compiles every public header in every way that a client may meet it, without producing code.
# usage: CheckHeaders.sh COMPILER SYSTEM INCLUDE_FOLDER...
# SYSTEM is the one that is compiled for, as CMake names it.
set -euo pipefail

compiler=$1
system=$2
shift 2
includes=()
for folder in "$@"; do includes+=(-I "$folder"); done
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Werror)

# What a client's other headers may have defined.
hostile_macros='#define min(a, b) ((a) < (b) ? (a) : (b))
#define max(a, b) ((a) > (b) ? (a) : (b))
#define ERROR 0
#define interface struct
#define small char
#define GetMessage GetMessageW
#define GetComputerName GetComputerNameW'
system_headers='#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>'
if [ "$system" = Windows ]; then
  system_headers='#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>'
fi
unicode='#define UNICODE
#define _UNICODE'

checked=0
compiles() {
  local standard=$1 what=$2 source=$3
  if ! printf '%s\n' "$source" |
    "$compiler" -std="$standard" -fsyntax-only -x c++ "${warnings[@]}" "${includes[@]}" -; then
    echo "does not compile as $standard: $what"
    exit 1
  fi
  checked=$((checked + 1))
}

# The headers, as a client names them.
mapfile -t headers
forward='' backward=''
for header in "${headers[@]}"; do
  forward+="#include <$header>"$'\n'
  backward="#include <$header>"$'\n'"$backward"
done

# windows.h renames what the client calls, the headers keep the one exported name.
use='const unsigned short* Text(const VelNet::Exception& e) { return e.GetMessage(); }
const unsigned short* Base(const VelBase::Message& m) { return m.GetMessage(); }'

for standard in c++17 c++20 c++2b; do
  for header in "${headers[@]}"; do
    compiles "$standard" "$header alone" "#include <$header>"
    compiles "$standard" "$header twice" "#include <$header>"$'\n'"#include <$header>"
  done
  compiles "$standard" 'all headers in order' "$forward$use"
  compiles "$standard" 'all headers in reverse order' "$backward$use"
  compiles "$standard" 'after the system headers' "$system_headers"$'\n'"$forward$use"
  compiles "$standard" 'before the system headers' "$forward$system_headers"$'\n'"$use"
  compiles "$standard" 'after the system headers, wide' "$unicode"$'\n'"$system_headers"$'\n'"$forward$use"
  compiles "$standard" 'before the system headers, wide' "$unicode"$'\n'"$forward$system_headers"$'\n'"$use"
  compiles "$standard" 'after hostile macros' "$hostile_macros"$'\n'"$forward$use"
done
echo "$checked compilations of ${#headers[@]} headers with $compiler"

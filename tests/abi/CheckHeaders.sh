#!/usr/bin/env bash
# Compiles every public header in every way that a client may include it, without producing code.
# usage: CheckHeaders.sh COMPILER SYSTEM INCLUDE_FOLDER...
# SYSTEM is the target system, as CMake names it.
set -euo pipefail

compiler=$1
system=$2
shift 2
includes=()
folders=("$@")
for folder in "$@"; do includes+=(-I "$folder"); done
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wundef -Werror)

# What a client's other headers may have defined.
hostile_macros='#define min(a, b) ((a) < (b) ? (a) : (b))
#define max(a, b) ((a) > (b) ? (a) : (b))
#define major(device) ((device) >> 8)
#define minor(device) ((device) & 255)
#define ERROR 0
#define NO_ERROR 0
#define DELETE 65536
#define IN
#define OUT
#define OPTIONAL
#define near
#define far
#define interface struct
#define small char
#define unix 1
#define linux 1
#define GetMessage GetMessageW
#define GetComputerName GetComputerNameW'
# Macros of the systems that the headers are prepared for.
known_macros='GetMessage'
system_headers='#include <arpa/inet.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <resolv.h>
#include <sys/ioctl.h>
#include <sys/param.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <unistd.h>'
lone_system_header='#include <sys/socket.h>'
if [ "$system" = Windows ]; then
  system_headers='#include <winsock2.h>
#include <ws2tcpip.h>
#include <mswsock.h>
#include <windows.h>
#include <objbase.h>
#include <iphlpapi.h>'
  lone_system_header='#include <windows.h>'
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

# A macro that has the name of something in the headers would change it behind the client's back.
names_in_headers() {
  printf '%s\n' "$forward" | "$compiler" -std=c++17 -E -P -x c++ "${includes[@]}" - | grep -oE '[A-Za-z_][A-Za-z0-9_]*'
}
macros_of_system() {
  comm -13 <(macros_after '') <(macros_after "$system_headers")
}
macros_after() {
  printf '%s\n' "$1" | "$compiler" -std=c++17 -dM -E -x c++ - | sed 's/^#define //; s/[ (].*//' | sort -u
}
names_collide() {
  local macros colliding
  macros=$(macros_of_system)
  [ -n "$macros" ] || { echo "the system headers define no macros"; exit 1; }
  colliding=$(comm -12 <(names_in_headers | sort -u) <(grep -vxF "$known_macros" <<<"$macros"))
  [ -n "$colliding" ] || return 0
  echo "the system has macros of these names: ${colliding//$'\n'/ }"
  exit 1
}

# A client that includes a header can write handlers for what its text says is thrown.
declares_what_it_throws() {
  local header=$1 text included
  text=$(cat "${folders[@]/%//$header}" 2>/dev/null || true)
  text=$(sed -nE 's#^ *// ?##p' <<<"$text" | tr -s '\n ' ' ')
  included=$(printf '#include <%s>' "$header" | "$compiler" -std=c++17 -MM -x c++ "${includes[@]}" -)
  [[ ! $text =~ hrows:?\ Exception\  || $included == *VelNet/Exception.h* ]] &&
    [[ $text != *ExceptionImpl\<* || $included == *VelBase/ExceptionImpl.h* ]]
}

for header in "${headers[@]}"; do
  declares_what_it_throws "$header" || {
    echo "$header does not include what it says is thrown"
    exit 1
  }
done

for standard in c++17 c++20 c++2b; do
  # Whatever compiles twice compiles alone.
  for header in "${headers[@]}"; do
    compiles "$standard" "$header alone, and twice" "#include <$header>"$'\n'"#include <$header>"
  done
  compiles "$standard" 'all headers in order' "$forward$use"
  compiles "$standard" 'all headers in reverse order' "$backward$use"
  for definitions in '' "$unicode"; do
    for before in "$system_headers" "$lone_system_header"; do
      compiles "$standard" 'after the system headers' "$definitions"$'\n'"$before"$'\n'"$forward$use"
      compiles "$standard" 'before the system headers' "$definitions"$'\n'"$forward$before"$'\n'"$use"
    done
  done
  compiles "$standard" 'after hostile macros' "$hostile_macros"$'\n'"$forward$use"
  compiles "$standard" 'after hostile macros, in reverse order' "$hostile_macros"$'\n'"$backward$use"
done
names_collide
echo "$checked compilations of ${#headers[@]} headers with $compiler; no name is a macro of the system"

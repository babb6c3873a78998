#!/usr/bin/env bash
# Holds the sources to the rules of the house: which floor may include which, where system headers, platform
# conditionals, macros and compiler extensions may stand, and that a public header includes public headers only.
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

# The C++ standard library's headers have neither a folder nor an extension.
is_standard() { [[ $1 != */* && $1 != *.* ]]; }
is_neighbour() {
  [[ $2 != */* && (-e $(dirname "$1")/$2 || ($1 == tools/* && -e tools/common/$2) || ($1 == logging/* && -e logging/$2)) ]]
}
is_of_system() { [[ $1 != */* || $1 =~ ^(arpa|linux|net|netinet|sys)/ ]]; }
is_of_companion() { [[ -e companion/include/$1 ]]; }
is_of_logging() { [[ -e logging/include/$1 ]]; }
is_of_test_framework() { [[ $1 == gtest/* || $1 == gmock/* ]]; }

# Which sources use the system itself: the platform floor, and what tests and tools need besides the library.
knows_system() {
  [[ $1 != Common/* || $1 =~ ^Common/platform/(posix|windows)/ ]] &&
    [[ $1 =~ /(posix|windows)/ || $1 =~ ^(bench|tools/demo)/ ]]
}

# The rooms of the POSIX floor, and which others each may include.
posix_room_may_include() {
  local room=${1#Common/platform/posix/} below
  room=${room%%/*}
  case $room in
    errors) below="" ;;
    system) below="errors" ;;
    sockets) below="errors system" ;;
    transfer | names | settings) below="errors system sockets" ;;
    *) return 1 ;;
  esac
  [[ " $room $below " == *" ${2%%/*} "* ]]
}

# The same for the support floor.
support_room_may_include() {
  local room=${1#Common/support/} below
  room=${room#include/}
  room=${room#internal/}
  case ${room%%/*} in
    VelBase) below="" ;;
    VelSynch | VelResource | VelRegistry) below="VelBase" ;;
    VelLog) below="VelBase VelSynch VelResource" ;;
    *) return 1 ;;
  esac
  [[ " ${room%%/*} $below " == *" ${2%%/*} "* ]]
}

# What libstdc++ 12 makes of these where there is no futex looks and goes to sleep in two steps: now and then, a thread
# under Windows is not woken any more.
forgets_wakeups() { [[ $1 != */posix/* && $2 =~ ^(barrier|latch|semaphore)$ ]]; }

may_include() {
  local file=$1 header=$2
  if forgets_wakeups "$file" "$header"; then return 1; fi
  is_standard "$header" || is_neighbour "$file" "$header" && return 0
  if is_of_system "$header"; then
    knows_system "$file"
    return
  fi
  case $file in
    Common/text/*) [[ $header == Text/* ]] ;;
    Common/platform/include/*) [[ $header == Platform/* ]] ;;
    Common/platform/posix/*)
      [[ $header =~ ^(Text|Platform)/ ]] || posix_room_may_include "$file" "$header" ;;
    Common/platform/*) [[ $header != Vel* && $header != Socket/* ]] ;;
    Common/support/*) [[ $header =~ ^(Text|Platform)/ ]] || support_room_may_include "$file" "$header" ;;
    Common/Socket/include/*) is_public "$header" ;;
    Common/Socket/Socket/*) [[ $header =~ ^(Text|Platform|Socket|VelBase|VelSynch|VelResource|VelLog|VelRegistry|VelNet)/ ]] ;;
    companion/*) is_public "$header" || is_of_companion "$header" ;;
    logging/*) is_public "$header" || is_of_logging "$header" ;;
    tools/* | examples/*) is_public "$header" || is_of_companion "$header" || is_of_logging "$header" ;;
    tests/logging/*)
      is_public "$header" || is_of_logging "$header" || is_of_test_framework "$header" ||
        [[ $header =~ ^(logging|support)/ ]] ;;
    tests/companion/*)
      is_public "$header" || is_of_companion "$header" || is_of_test_framework "$header" ||
        [[ $header =~ ^(companion|loopback|support)/ ]] ;;
    tests/loopback/* | tests/abi/*)
      is_public "$header" || is_of_test_framework "$header" || [[ $header =~ ^(loopback|abi|support)/ ]] ;;
    *) return 0 ;;
  esac
}

# must_not_hold FILE PATTERN WHAT: reports each line that has the pattern.
must_not_hold() {
  if grep -nE "$2" "$1"; then problem "$1 must not hold $3"; fi
}

sources() {
  find Common companion logging tools examples tests bench -type f \( -name '*.h' -o -name '*.cpp' \) | LC_ALL=C sort
}

directive='^[[:space:]]*#[[:space:]]*'
while read -r file; do
  files=$((files + 1))
  while read -r header; do
    may_include "$file" "$header" || problem "$file must not include $header"
  done < <(includes_of "$file")

  case $file in
    Common/platform/posix/* | Common/platform/windows/* | Common/support/include/VelBase/Export.h) continue ;;
    # Its class has a shape that compilers warn of.
    Common/Socket/include/VelNet/SocketCollection.h) continue ;;
  esac
  must_not_hold "$file" "${directive}(if|ifdef|ifndef|elif|elifdef|elifndef)" 'a conditional'
  must_not_hold "$file" "${directive}define" 'a macro'
  case $file in
    # windows.h renames what these two declare.
    Common/support/include/VelBase/Message.h | Common/Socket/include/VelNet/Exception.h) ;;
    *) must_not_hold "$file" "${directive}(undef|pragma[[:space:]]+(push|pop)_macro)" 'a macro guard' ;;
  esac
  knows_system "$file" ||
    must_not_hold "$file" \
      '__attribute__|__declspec|__builtin_|__extension__|__int128|__typeof|\[\[(gnu|clang|msvc)::|#[[:space:]]*pragma (GCC|clang|warning)' \
      'a compiler extension'
done < <(sources)

for header in "${public_headers[@]}"; do
  path=$(find Common/*/include -path "*/include/$header")
  if [[ -z $path ]]; then
    problem "the public header $header does not exist"
    continue
  fi
  while read -r included; do
    is_standard "$included" || is_public "$included" ||
      problem "$header is public and must not include $included, which is not"
  done < <(includes_of "$path")
done

((files > 0)) || problem "no sources were found"
((problems == 0)) || exit 1
echo "$files sources keep to their floors"

#!/usr/bin/env bash
# Builds programs with an installed package, by CMake and by hand, and runs them: the client and the server of its README,
# and one with the companion.
# usage: Consume.sh PREFIX README [windows]
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# The programs of the README use a fixed port: they get a network of their own where that is possible.
if [ -z "${CONSUMER_NETWORK-}" ] && command -v ip >/dev/null && unshare --net true 2>/dev/null; then
  # shellcheck disable=SC2016  # for the inner shell
  CONSUMER_NETWORK=own exec unshare --net -- sh -c 'ip link set lo up && exec "$@"' sh "$here/Consume.sh" "$@"
fi
prefix=$(realpath "$1")
readme=$(realpath "$2")
system=${3-linux}
folder=$(mktemp -d)

clean_up() {
  # shellcheck disable=SC2046  # several processes
  kill $(jobs -p) 2>/dev/null || true
  [ "$system" = linux ] || timeout --kill-after=10 60 wineserver -k || true
  rm -rf "$folder"
}
trap clean_up EXIT

fail() {
  echo "$1" >&2
  exit 1
}

# program N: the README's N-th block of C++ that is a whole program.
program() {
  awk -v wanted="$1" '
    /^```cpp$/ { text = ""; inside = 1; next }
    /^```$/ && inside { inside = 0; if (text ~ /int main\(/ && ++found == wanted) printf "%s", text; next }
    inside { text = text $0 "\n" }' "$readme"
}

write_sources() {
  cp "$here"/consumer/* "$folder"
  program 1 >"$folder/client.cpp"
  program 2 >"$folder/server.cpp"
  grep -q Connect "$folder/client.cpp" || fail "the README has no client"
  grep -q Accept "$folder/server.cpp" || fail "the README has no server"
}

# await_port PORT: until somebody listens there.
await_port() {
  local deadline=$((SECONDS + 300)) hex
  hex=$(printf ':%04X 00000000:0000 0A' "$1")
  until grep -q "$hex" /proc/net/tcp; do
    [ "$SECONDS" -lt "$deadline" ] || fail "nobody listens at port $1"
    sleep 0.1
  done
}

# run PROGRAM: of the build in the current folder.
run() {
  case $system in
    linux) LD_LIBRARY_PATH=${library_path-} timeout --kill-after=10 600 "./$1" ;;
    windows) timeout --kill-after=10 600 wine "./$1.exe" | tr -d '\r' ;;
  esac
}

# The client's greeting comes back, and a refused connection is explained.
check_programs() {
  local answer
  run server &
  await_port 4000
  answer=$(run client)
  wait $!
  [ "$answer" = hello ] || fail "the client printed '$answer'"
  answer=$(run refused)
  grep -q 'SOCKET_ERR_CONNREFUSED' <<<"$answer" || fail "the refusal was described as '$answer'"
  answer=$(run logged)
  grep -q '"category":"Error"' <<<"$answer" || fail "the record was '$answer'"
  echo "$1: the client got its answer, and the refusal was described, a record written"
}

build_by_cmake() {
  local toolchain=()
  if [ "$system" = windows ]; then
    toolchain=(-D "CMAKE_TOOLCHAIN_FILE=$here/../../cmake/toolchains/mingw-w64.cmake" -D "VelSock_DIR=$prefix/lib/cmake/VelSock")
  fi
  # A user's warnings, which are errors.
  cmake -S "$folder" -B "$folder/by-cmake" -D CMAKE_BUILD_TYPE=Release -D "CMAKE_PREFIX_PATH=$prefix" \
    -D CMAKE_CXX_FLAGS="-Wall -Wextra -Wnon-virtual-dtor -Woverloaded-virtual -Werror" "${toolchain[@]}" >/dev/null
  cmake --build "$folder/by-cmake" >/dev/null
}

build_by_hand() {
  local package compiler=${CXX:-g++} source flags
  [ "$system" = linux ] || compiler=x86_64-w64-mingw32-g++-posix
  # The file of this package, and of no other.
  pc_folder=$(dirname "$(find "$prefix" -name velsock.pc)")
  mkdir "$folder/by-hand"
  for source in client server refused logged; do
    package=velsock
    [ "$source" != server ] || package=velsock-static
    [ "$source" != logged ] || package=velsock-logging
    # Blanks in the folders' names come quoted as a shell needs them.
    eval "flags=($(PKG_CONFIG_LIBDIR=$pc_folder pkg-config --cflags --libs "$package"))"
    "$compiler" -std=c++17 -O2 -o "$folder/by-hand/$source" "$folder/$source.cpp" "${flags[@]}"
  done
}

# The programs for Windows find the libraries beside themselves.
prepare_to_run() {
  if [ "$system" = windows ]; then
    export WINEPREFIX=$folder/wine WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
    unset DISPLAY
    cp "$prefix"/bin/*.dll .
  fi
}

write_sources
build_by_cmake
cd "$folder/by-cmake"
prepare_to_run
check_programs CMake
build_by_hand
cd "$folder/by-hand"
prepare_to_run
library_path=$(dirname "$(find "$prefix" -name 'libvelsock.so.1' | head -1)")
check_programs pkg-config

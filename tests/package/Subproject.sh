#!/usr/bin/env bash
# The library as a part of another project, whose warnings are many and errors: they are about its own sources alone.
# usage: Subproject.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

project=$(realpath "$1")
folder=$2
rm -rf "$folder/source"
mkdir -p "$folder/source"

cat >"$folder/source/CMakeLists.txt" <<TEXT
cmake_minimum_required(VERSION 3.22)
project(Another LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 17)
include(FetchContent)
FetchContent_Declare(VelSock SOURCE_DIR "$project")
FetchContent_MakeAvailable(VelSock)
add_executable(client "$project/examples/Client.cpp")
target_link_libraries(client PRIVATE VelSock::companion)
TEXT
cmake -S "$folder/source" -B "$folder/build" -D CMAKE_CXX_COMPILER=clang++ -D CMAKE_BUILD_TYPE=Debug \
  -D CMAKE_CXX_FLAGS="-Weverything -Werror -Wno-c++98-compat -Wno-c++98-compat-pedantic" >/dev/null
cmake --build "$folder/build" --target client --parallel "$(nproc)" >/dev/null
if "$folder/build/client" 2>"$folder/failure"; then
  echo "the client found a server" >&2
  exit 1
fi
grep -q SOCKET_ERR_CONNREFUSED "$folder/failure"
echo "A part of another project: built with its warnings, and the client runs"

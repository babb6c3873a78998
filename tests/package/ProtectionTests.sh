#!/usr/bin/env bash
# The search for protections passes a module, a program and an archive that have them all, and finds each that is
# missing.
# usage: ProtectionTests.sh linux|windows COMPILER
set -euo pipefail

system=$1
compiler=$2
check=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/CheckProtections.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
faults=0

fail() {
  echo "$1" >&2
  exit 1
}

# Calls by address, and a buffer on the stack into which a text is copied.
write_source() {
  local number
  echo '#include <cstdio>'
  echo '#include <cstring>'
  for number in {1..30}; do echo "int Function$number(int value) { return value + $number; }"; done
  echo 'void Copy(const char* text) { char room[16]; std::strcpy(room, text); std::puts(room); }'
  echo '#ifndef QUIET'
  echo 'void Print(const char* text, int number) { std::printf("%s %d", text, number); }'
  echo '#endif'
  echo 'int main(int count, char** words) { Copy(words[0]); return Function1(count); }'
}

compiling=(-O2 -fstack-protector-strong -fcf-protection=full -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
# shellcheck disable=SC2054  # the commas are the compiler's
linking=(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

# program OPTION..., and the like: with the options after those that protect.
program() {
  "$compiler" "${compiling[@]}" -fPIE -pie "${linking[@]}" "$@" -o made source.cpp
}
module() {
  "$compiler" "${compiling[@]}" -fPIC -shared -Wl,-soname,libmade.so.1 "${linking[@]}" "$@" -o made source.cpp
}
archive() {
  rm -f made
  "$compiler" "${compiling[@]}" -fPIC -c "$@" -o source.o source.cpp
  ar rcs made source.o
}
windows_program() {
  "$compiler" -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va "$@" -o made.exe source.cpp
  mv made.exe made
}
windows_program_without_relocations() {
  windows_program "$@"
  "${compiler%g++*}objcopy" --remove-section .reloc made
}

expect_pass() {
  "$@"
  "$check" --installed made || fail "$* has its protections"
}

# expect_fault MESSAGE COMMAND...
expect_fault() {
  local said
  "${@:2}"
  if said=$("$check" --installed made 2>&1); then fail "nobody notices: ${*:2}"; fi
  [[ $said == *"$1"* ]] || fail "${*:2}: not noticed for its reason but for this one: $said"
  faults=$((faults + 1))
}

try_linux() {
  local kind
  for kind in program module archive; do expect_pass "$kind"; done
  for kind in program module; do
    expect_fault "no read-only relocations" "$kind" -Wl,-z,norelro
    expect_fault "no binding at load time" "$kind" -Wl,-z,lazy
    expect_fault "no stack that is not executable" "$kind" -Wl,-z,execstack
    expect_fault "no stack protector" "$kind" -fno-stack-protector
    expect_fault "has formatting that is not checked" "$kind" -U_FORTIFY_SOURCE
    expect_fault "searches a fixed folder" "$kind" -Wl,-rpath,/built/here
    # shellcheck disable=SC2016  # the loader's word for the file's own folder
    expect_fault "searches a fixed folder" "$kind" '-Wl,-rpath,$ORIGIN/../lib:/built/here'
  done
  expect_fault "no address of the loader's choice" program -fno-pie -no-pie
  expect_fault "no checked functions" module -U_FORTIFY_SOURCE -D QUIET
  # An address that the loader must write into the code.
  expect_fault "has relocations in its code" module -Wl,-z,notext -xassembler <(echo '.text; .quad Function1') -xc++
  expect_fault "no stack protector" archive -fno-stack-protector
  expect_fault "no checked functions" archive -U_FORTIFY_SOURCE
  [ "$(uname -m)" != x86_64 ] || try_landing_places
  expect_fault "neither a module nor a program nor an archive" cp source.cpp made
}

try_landing_places() {
  expect_fault "no landing places" program -fcf-protection=none
  expect_fault "no landing places" module -fcf-protection=none
  expect_fault "not all objects have landing places" archive -fcf-protection=none
  # One function of many.
  sed -i 's/^int Function7/__attribute__((nocf_check)) int Function7/' source.cpp
  expect_fault "no landing place at _Z9Function7i" module
}

try_windows() {
  expect_pass windows_program
  expect_fault "no HIGH_ENTROPY_VA" windows_program -Wl,--disable-high-entropy-va
  expect_fault "no DYNAMIC_BASE" windows_program -Wl,--disable-dynamicbase
  expect_fault "no NX_COMPAT" windows_program -Wl,--disable-nxcompat
  expect_fault "no relocations" windows_program_without_relocations
}

write_source >source.cpp
"try_$system"
echo "$faults missing protections are noticed"

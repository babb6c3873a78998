#!/usr/bin/env bash
# What gdb shows of the library's values with the printers in packaging/gdb.
#
#   GdbTests.sh PROGRAM PROGRAM_WITHOUT_THE_LIBRARYS_DEBUG_INFORMATION TEST
set -euo pipefail
# gdb prints in the encoding of its environment.
export LC_ALL=C.UTF-8

printers=$(dirname "$(realpath "${BASH_SOURCE[0]}")")/../../packaging/gdb/libvelsock-gdb.py
tests=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
natvis=$tests/../../packaging/windows/VelSock.natvis
whole=$1
alone=$2
command -v gdb >/dev/null || {
  echo "gdb is not installed"
  exit 77
}

# shown PROGRAM EXPRESSION...: what gdb prints of each where the program stops in Look.
shown() {
  local options=() expression
  for expression in "${@:2}"; do options+=(-ex "print $expression"); done
  DEBUGINFOD_URLS='' gdb --batch --nx -iex 'set auto-load no' -iex 'set width 0' -ex "source $printers" \
    -ex 'set breakpoint pending on' -ex 'break Look' -ex run -ex up "${options[@]}" "$1" 2>errors | sed -n 's/^\$[0-9]* = //p'
}

# expect_shown PROGRAM EXPRESSION PATTERN
expect_shown() {
  local text
  text=$(shown "$1" "$2")
  [[ $text =~ ^$3$ ]] || {
    echo "$2: expected a match of '$3' but gdb shows '$text'"
    cat errors
    exit 1
  }
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

TestValuesAreShownAsTheyAreWritten() {
  expect_shown "$whole" text '"narrow"'
  expect_shown "$whole" noText '""'
  expect_shown "$whole" wideText '"wide ❍"'
  expect_shown "$whole" octets '192\.0\.2\.7'
  expect_shown "$whole" endpoint '192\.0\.2\.7 port 4000'
  expect_shown "$whole" address '.* \(0\.0\.0\.0\) port 80'
  expect_shown "$whole" message 'a message \(domain 2, id 7\)'
}

TestAFailureIsShownWithNumberAndSymbol() {
  expect_shown "$whole" failure \
    'VelNet::SocketImpl::Connect\(\) .* errno = 10061 Connection refused \(10061 SOCKET_ERR_CONNREFUSED\)'
}

TestSocketsAreShownWithStateAndEndpoints() {
  expect_shown "$whole" nobody empty
  expect_shown "$whole" socket \
    'owner of VelNet::SocketImpl at 0x[0-9a-f]+ = \{object = IPv4 socket, listening, handle [0-9]+, 0\.0\.0\.0 port 0 -> 0\.0\.0\.0 port 0\}'
  expect_shown "$whole" client \
    'owner of .* = \{object = IPv4 socket, connected, handle [0-9]+, 127\.0\.0\.1 port [1-9][0-9]* -> 127\.0\.0\.1 port [1-9][0-9]*\}'
  expect_shown "$whole" extended \
    'owner of VelNet::SocketXtImpl at 0x[0-9a-f]+ = \{object = IPv4 extended socket, connected, handle [0-9]+, 127\.0\.0\.1 port 0 -> none\}'
}

TestCollectionsAreShownWithTheirElements() {
  expect_shown "$whole" list 'owner of VelNet::OctetsCollectionImpl .*2 addresses = \{192\.0\.2\.7, 192\.0\.2\.8\}.*'
  expect_shown "$whole" "*(VelNet::SocketCollectionImpl*)collection" '1 entries = .*accept.*IPv4 socket, listening.*'
}

TestWithoutTheLibrarysDebugInformationTheRestIsShown() {
  expect_shown "$alone" text '"narrow"'
  expect_shown "$alone" wideText '"wide ❍"'
  expect_shown "$alone" octets '192\.0\.2\.7'
  expect_shown "$alone" endpoint "unknown without the library's debug symbols"
  expect_shown "$alone" address "unknown without the library's debug symbols"
  expect_shown "$alone" nobody empty
  expect_shown "$alone" socket 'owner of VelNet::Socket at 0x[0-9a-f]+'
  expect_shown "$alone" failure "unknown without the library's debug symbols"
}

# Needs no program that runs, but one that has all of the library's debug information.
expect_natvis() {
  NATVIS=$1 gdb --batch --nx -iex 'set auto-load no' -x "$tests/NatvisTests.py" "$whole" >said 2>&1
}

TestWhatVisualStudioIsToldExists() {
  expect_natvis "$natvis" || {
    cat said
    exit 1
  }
  grep -q 'members exist' said
  local fault
  for fault in 's/local_/lokal_/' 's/record_->port/record_->gate/' 's/"VelNet::Octets"/"VelNet::Octet"/' 's/<.Type>//'; do
    sed "$fault" "$natvis" >faulty.natvis
    ! cmp -s "$natvis" faulty.natvis || {
      echo "$fault changes nothing"
      exit 1
    }
    ! expect_natvis faulty.natvis || {
      echo "nobody notices $fault: $(cat said)"
      exit 1
    }
  done
}

"$3"

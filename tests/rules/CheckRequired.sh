#!/usr/bin/env bash
# Holds each mark of a required oddity to a test that fails when somebody repairs it. In the library's sources a mark
# is a comment "Required (Suite.Test): ...", with several tests parted by commas. Clients' headers say "Required:"
# without names that mean nothing to a client; their tests stand here, in the order of the marks.
# usage: CheckRequired.sh PROJECT_FOLDER
set -euo pipefail

# shellcheck source=ExistingTests.sh
source "$(dirname "${BASH_SOURCE[0]}")/ExistingTests.sh"
cd "$1"
problems=0
marks=0

problem() {
  echo "$1"
  problems=$((problems + 1))
}

tests_of_public_header() {
  case ${1#Common/*/include/} in
    VelNet/Address.h) echo AddressValues.CopyOfADefaultOneCountsAsInitialized ;;
    VelNet/Octets.h) echo OctetsValue.AddressIsTheWordReversed ;;
    VelNet/Socket.h)
      echo Accept.AsksTheListenerForItsOwnAddressAndWritesTheRecord
      echo SocketOptions.FailedSendTimeoutNamesTheReceiveTimeoutsFunction
      echo Receive.NothingToReceiveOnANonBlockingSocketThrows
      echo SocketAddresses.FailureIsLoggedAndThrownWithTheLabelOfSend
      ;;
    VelNet/SocketAddress.h)
      echo HostResolution.NamesThatBeginWithLocalhostAreLookedUpAsJustThat
      echo DottedText.BroadcastAddressIsRejected
      echo LocalDomain.EmptyDhcpDomainEndsTheWalk
      echo NameServers.EmptyValuesDoNotEndTheWalk
      ;;
    VelNet/SocketCollection.h) echo Signatures.SocketCollectionHasNeitherDataNorCountNorDestructor ;;
    VelNet/SocketInitialization.h) echo StartUpFailure.OfMemoryForTheStateIsCountedAndStartsNothing ;;
    VelNet/SocketXt.h) echo XtConnect.FailureLeavesThisMachinesNameAndAllElseAsItWas ;;
  esac
}

# The marks of a file, one a line: "Required:" or "Required (...):". A comment may go on in the next line.
marks_of() {
  sed -nE 's|^.*// ?||p' "$1" | tr '\n' ' ' | grep -oE '\bRequired( +\([^)]*\))?:' || true
}

declare -A exists
while read -r test; do exists[$test]=1; done < <(existing_tests)

# require_test FILE TEST
require_test() {
  [[ -n ${exists[$2]:-} ]] || problem "$1: there is no test $2 for what is marked as required"
}

check_public_header() {
  local file=$1 found=$2 test known=0
  while read -r test; do
    known=$((known + 1))
    require_test "$file" "$test"
  done < <(tests_of_public_header "$file")
  ((known == found)) ||
    problem "$file: holds $found marks of what is required; tests/rules/CheckRequired.sh knows the tests of $known"
}

# check_mark FILE MARK
check_mark() {
  local names test
  names=$(sed -nE 's/^Required +\((.*)\):$/\1/p' <<<"$2")
  if [[ -z $names ]]; then
    problem "$1: \"Required:\" names no test; write \"Required (Suite.Test):\""
    return
  fi
  for test in ${names//,/ }; do require_test "$1" "$test"; done
}

while read -r file; do
  mapfile -t found < <(marks_of "$file")
  marks=$((marks + ${#found[@]}))
  if [[ $file == Common/*/include/VelNet/* ]]; then
    check_public_header "$file" "${#found[@]}"
  else
    for mark in "${found[@]}"; do check_mark "$file" "$mark"; done
  fi
done < <(find Common -type f \( -name '*.h' -o -name '*.cpp' \) | LC_ALL=C sort)

((marks > 0)) || problem "no marks of what is required were found"
((problems == 0)) || exit 1
echo "$marks required oddities have their tests"

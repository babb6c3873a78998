#!/usr/bin/env bash
# The example for more clients than a collection holds, with a thousand at once.
#
#   ManyClientsTests.sh SERVER TEST
set -euo pipefail

program=$(realpath "$1")
# shellcheck source=Tool.sh
source "$(dirname "${BASH_SOURCE[0]}")/Tool.sh"

# Each client is a descriptor here and one in the server.
ulimit -n 4096 2>/dev/null || exit "$not_run"

start_server() {
  mkfifo says
  "$program" 0 >says &
  peer=$!
  exec {says}<says
  local line
  read -r line <&"$says"
  expect_match "$line" '^listening on port [1-9][0-9]*$'
  port=${line##* }
}

clients=()
# connect COUNT: that many more clients. Each waits for an answer, since the system lets only a few connections wait to
# be accepted, and repeats the request of another one after a second.
connect() {
  local connection line
  for ((count = 0; count < $1; count++)); do
    exec {connection}<>"/dev/tcp/127.0.0.1/$port"
    echo hello >&"$connection"
    read -r -t 50 line <&"$connection" || fail "a client was not accepted"
    expect_equal "$line" hello
    clients+=("$connection")
  done
}

# All clients send, and only then each expects what it has sent.
expect_echoes() {
  local index line
  for index in "${!clients[@]}"; do echo "$1 $index" >&"${clients[index]}"; done
  for index in "${!clients[@]}"; do
    read -r -t 50 line <&"${clients[index]}" || fail "client $index had no answer"
    expect_equal "$line" "$1 $index"
  done
}

# Besides those that it has for one client; a sanitizer has one of its own.
more_threads() { echo $(($(threads) - threads_for_one)); }
threads() { find "/proc/$peer/task" -mindepth 1 -maxdepth 1 | wc -l; }
descriptors() { find "/proc/$peer/fd" -mindepth 1 -maxdepth 1 | wc -l; }

TestServesAThousandClientsAtOnce() {
  start_server
  connect 1
  threads_for_one=$(threads)
  connect 999
  expect_echoes 'the first of'
  expect_echoes 'the second of'
  # 63 for each.
  expect_equal "$(more_threads)" 15
}

TestPlacesOfClientsThatLeftAreTakenAgain() {
  start_server
  connect 1
  threads_for_one=$(threads)
  connect 125
  expect_echoes before
  expect_equal "$(more_threads)" 1
  local open left=${clients[5]}
  open=$(descriptors)
  unset 'clients[5]'
  exec {left}>&-
  # The server learns of it in its own time.
  for _ in {1..300}; do
    [ "$(descriptors)" = "$open" ] || break
    sleep 0.1
  done
  expect_equal "$(descriptors)" $((open - 1))
  connect 1
  expect_echoes after
  expect_equal "$(more_threads)" 1
}

TestAClientThatDoesNotReadDoesNotKeepTheOthersWaiting() {
  start_server
  connect 1
  local silent=${clients[0]}
  unset 'clients[0]'
  cat /dev/zero >&"$silent" &
  local writer=$!
  connect 5
  expect_echoes beside
  wait "$writer" || true # the server has closed its connection
  expect_echoes after
}

"$2"

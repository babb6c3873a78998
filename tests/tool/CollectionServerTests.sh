#!/usr/bin/env bash
# The collection server of the examples, with fifty clients at once.
#
#   CollectionServerTests.sh SERVER CLIENTS TEST
set -euo pipefail

program=$(realpath "$1")
clients=$(realpath "$2")
# shellcheck source=Tool.sh
source "$(dirname "${BASH_SOURCE[0]}")/Tool.sh"

writer=""
stop_writer() {
  [ -z "$writer" ] || kill "$writer" 2>/dev/null || true
  tidy_up
}
trap stop_writer EXIT

# Sets peer and port; what the server says goes to says.
start_server() {
  mkfifo says
  "$program" 0 >says &
  peer=$!
  exec {says}<says
  local line
  read -r line <&"$says"
  expect_match "$line" '^listening on 127\.0\.0\.1 port [1-9][0-9]*$'
  port=${line##* }
}

# The next line that the server says.
expect_said() {
  local line
  read -r line <&"$says"
  expect_match "$line" "$1"
}

connect_plainly() {
  exec {connection}<>"/dev/tcp/127.0.0.1/$port"
}

TestServesFiftyClientsOfWhichOneIsSlowOneResetsAndOneNeverReads() {
  start_server
  "$clients" "$port" >seen
  expect_equal "$(wc -l <seen)" 5
  kill -0 "$peer"
}

TestSeesAClientClose() {
  start_server
  connect_plainly
  printf 'twelve bytes' >&"$connection"
  expect_equal "$(head -c 12 <&"$connection")" 'twelve bytes'
  exec {connection}>&-
  expect_said '^127\.0\.0\.1 port [1-9][0-9]* closed after 12 bytes$'
}

# One that does not rest runs through every second.
TestRestsWhileAClientDoesNotRead() {
  start_server
  connect_plainly
  cat /dev/zero >&"$connection" &
  writer=$!
  head -c 100000 <&"$connection" >/dev/null
  local before attempt
  for attempt in {1..20}; do
    before=$(cpu_ticks)
    sleep 1
    [ "$(($(cpu_ticks) - before))" -gt 10 ] || return 0
  done
  fail "the server was not at rest in any of $attempt seconds"
}

# The time that the server has run, in hundredths of a second.
cpu_ticks() {
  sed 's/.*) //' "/proc/$peer/stat" | awk '{ print $12 + $13 }'
}

TestMoreClientsThanACollectionHoldsWaitForTheirTurn() {
  start_server
  connect_plainly
  local first=$connection
  for _ in {2..63}; do
    connect_plainly
    printf x >&"$connection"
    expect_equal "$(head -c 1 <&"$connection")" x
  done
  connect_plainly
  printf y >&"$connection"
  exec {first}>&-
  expect_equal "$(head -c 1 <&"$connection")" y
}

"$3"

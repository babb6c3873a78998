#!/usr/bin/env bash
# velsock-cat between two others.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

# The target is a peer like the relay, which is started after it.
target=""
trap '[ -z "$target" ] || kill -KILL "$target" 2>/dev/null || true; tidy_up' EXIT

start_target() {
  start "$@"
  mv peer.out target.out
  target=$peer target_host=$host target_port=$port target_says=$says peer=""
}

# start_relay OPTION... <INPUT
start_relay() {
  start "$@" relay 0 "$target_host" "$target_port" </dev/null
}

await_target() {
  target_status=0
  cat <&"$target_says" >target.err
  wait "$target" || target_status=$?
  target=""
}

use_both_versions() {
  enter_own_network '127.0.0.1 localhost velsock-host' '::1 localhost'
}

TestBothDirectionsPassAndEnd() {
  make_file
  head -c 2000000 /dev/urandom >other
  start_target listen 0 <other
  start_relay --stats
  run -N connect "$host" "$port" <file
  await_peer
  await_target
  expect_equal "$status $peer_status $target_status" "0 0 0"
  cmp other out
  cmp file target.out
  expect_match "$(cat peer.err)" '^sent 3000001 bytes, received 2000000 bytes in .*; connected in .* ms; first byte after '
}

TestAnEndArrivesWhileTheOtherDirectionGoesOn() {
  start_target --keep echo 0 </dev/null
  start_relay
  make_file
  run -N connect "$host" "$port" <file
  await_peer
  expect_equal "$status $peer_status" "0 0"
  cmp file out
}

TestEitherVersionReachesTheOther() {
  use_both_versions
  start_target -6 --keep echo 0 </dev/null
  expect_equal "$target_host" ::1
  start_relay -4
  run -4 -N connect "$host" "$port" < <(printf 'from IPv4')
  await_peer
  expect_equal "$host $status $peer_status $(cat out)" "127.0.0.1 0 0 from IPv4"
  kill "$target"
  start_target -4 --keep echo 0 </dev/null
  start_relay -6
  run -6 -N connect "$host" "$port" < <(printf 'from IPv6')
  await_peer
  expect_equal "$host $status $peer_status $(cat out)" "::1 0 0 from IPv6"
}

TestManyConnectionsPassAtOnce() {
  start_target --keep echo 0 </dev/null
  start_relay --keep
  expect_echoes_on_two_connections one two
}

# A process that is killed with bytes unread resets its connections.
TestAResetIsPassedOn() {
  mkfifo input.pipe
  exec 5<>input.pipe
  start_target -4 listen 0 <input.pipe
  printf greeting >&5
  start_relay -4
  connect_plainly
  read -r -N 8 -u 3 -t 30 answer
  expect_equal "$answer" greeting
  kill -STOP "$target"
  # All its threads: one that is still on its way would read what comes.
  while grep -h '^State:' "/proc/$target"/task/*/status | grep -qv stopped; do :; done
  printf unread >&3
  # What was sent here has left the relay when it is counted there.
  until [ "$(relayed_bytes)" = 00000006 ]; do :; done
  kill -KILL "$target"
  target=""
  ! cat <&3 2>cat.err || fail "the reset has become an orderly end"
  expect_match "$(cat cat.err)" 'reset'
  await_peer
  expect_equal "$peer_status" 4
}

# Of the target's connection, by its port: what has been received and not read, in hexadecimal digits.
relayed_bytes() {
  local port_digits
  port_digits=$(printf '%04X' "$target_port")
  awk -v port=":$port_digits" '$2 ~ port "$" && $4 == "01" { print substr($5, 10) }' /proc/net/tcp | head -n 1
}

TestATargetThatRefusesResetsTheClient() {
  take_closed_port listen
  target_host=$host target_port=$port
  start_relay
  connect_plainly
  ! cat <&3 2>cat.err || fail "the client sees an orderly end"
  await_peer
  expect_equal "$peer_status" 3
  expect_equal "$(cat peer.err)" "velsock-cat: cannot connect to 127.0.0.1 port $target_port: Connection refused (10061 SOCKET_ERR_CONNREFUSED)"
}

TestATargetThatDoesNotResolveIsTold() {
  start relay 0 no-such-host.invalid 80 </dev/null
  connect_plainly
  await_peer
  expect_equal "$peer_status" 2
  expect_match "$(cat peer.err)" '^velsock-cat: cannot connect to no-such-host\.invalid port 80: '
}

TestDatagramsPassAndTheAnswersFindTheirWay() {
  start_target -u echo 0 </dev/null
  start_relay -u
  local text
  for text in one two; do
    exec {client}<>"/dev/udp/$host/$port"
    printf '%s' "$text" >&"$client"
    read -r -N 3 -u "$client" -t 30 answer
    expect_equal "$answer" "$text"
  done
}

TestDatagramsOfEitherVersionReachTheOther() {
  use_both_versions
  start_target -6 -u echo 0 </dev/null
  start_relay -4 -u
  run -4 --answers 1 udp-send "$host" "$port" < <(printf 'from IPv4')
  expect_equal "$host $status $(cat out)" "127.0.0.1 0 from IPv4"
}

TestDatagramsForNobodyAreLost() {
  take_closed_port udp-listen
  target_host=$host target_port=$port
  start_relay -u --recv-timeout 1000
  run --answers 1 --recv-timeout 200 udp-send "$host" "$port" < <(printf lost)
  expect_equal "$status" 5
  await_peer
  expect_equal "$peer_status" 5
}

"$test"

#!/usr/bin/env bash
# velsock-cat as a server: echo, discard, chargen, and listen for many connections.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

# start_serving OPTION... COMMAND
start_serving() {
  start "$family" "$@" 0 </dev/null
}

not_for_classic_sockets() {
  [ "$sockets" != classic ] || exit 0
}

TestEchoSendsBackWhatComes() {
  start_serving echo
  make_file
  run "$family" connect "$host" "$port" <file
  await_peer
  expect_equal "$status $peer_status" "0 0"
  cmp file out
}

TestWithoutKeepOneConnectionIsServed() {
  start_serving echo
  connect_plainly
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 0
  ! (exec 4<>"/dev/tcp/$host/$port") 2>connect.err || fail "a second connection was accepted"
}

TestManyAreServedAtOnce() {
  start_serving --keep echo
  expect_echoes_on_two_connections one two three
}

TestAConnectionThatIsLostLeavesTheOthers() {
  start_serving --keep echo
  exec 3<>"/dev/tcp/$host/$port" 4<>"/dev/tcp/$host/$port"
  echo lost >&3
  wait_until_received 3
  # Closing with bytes unread resets the connection.
  exec 3>&-
  read_said 30
  expect_match "$line" '^velsock-cat: cannot receive from the peer: .*\(100(53|54) SOCKET_ERR_'
  echo kept >&4
  read -r -u 4 -t 30 answer
  expect_equal "$answer" kept
}

TestDiscardReadsAndIsSilent() {
  start_serving --stats discard
  make_file
  run "$family" --send-only connect "$host" "$port" <file
  await_peer
  expect_equal "$status $peer_status $(stat -c %s peer.out)" "0 0 0"
  expect_match "$(cat peer.err)" '^sent 0 bytes, received 3000001 bytes in '
}

# As RFC 864 suggests.
TestChargenSendsLinesUntilThePeerHasEnough() {
  start_serving chargen
  connect_plainly
  head -c $((95 * 74)) <&3 >received
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 0
  expect_equal "$(grep -c $'^.\{72\}\r$' received)" 95
  # shellcheck disable=SC2016  # characters, as they come
  expect_equal "$(head -n 1 received | tr -d '\r')" ' !"#$%&'\''()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\]^_`abcdefg'
  expect_equal "$(sed -n 2p received | head -c 3)" '!"#'
  expect_equal "$(cut -c 1 received | sort -u | wc -l)" 95
}

TestKeptListenersTakeOneAfterTheOther() {
  start_serving --keep listen
  local text
  for text in first second third; do
    run "$family" -N connect "$host" "$port" < <(echo "$text")
    expect_equal "$status $(cat err)" "0 "
  done
  expect_equal "$(cat peer.out)" $'first\nsecond\nthird'
  kill -0 "$peer"
}

TestKeptListenersEndWhenNobodyComesAnyMore() {
  start_serving --keep --accept-timeout 100 echo
  await_peer
  expect_equal "$peer_status" 5
  expect_equal "$(cat peer.err)" "velsock-cat: nobody has connected within 100 ms"
  start_serving --keep --accept-timeout 3000 echo
  run "$family" -N connect "$host" "$port" < <(printf text)
  await_peer
  expect_equal "$status $peer_status $(cat out)" "0 0 text"
}

TestEchoAnswersDatagrams() {
  not_for_classic_sockets
  start_serving -u --count 2 echo
  run "$family" --answers 2 --size 4 udp-send "$host" "$port" < <(printf one-; sleep 0.1; printf two-)
  await_peer
  expect_equal "$status $peer_status $(cat out)" "0 0 one-two-"
}

TestChargenAnswersDatagrams() {
  not_for_classic_sockets
  start_serving -u --count 1 chargen
  run "$family" --answers 1 udp-send "$host" "$port" < <(printf any)
  await_peer
  expect_equal "$status $peer_status $(stat -c %s out)" "0 0 512"
}

TestDiscardDoesNotAnswerDatagrams() {
  not_for_classic_sockets
  start_serving -u --count 1 --stats discard
  run "$family" --answers 1 --recv-timeout 200 udp-send "$host" "$port" < <(printf any)
  await_peer
  expect_equal "$status $peer_status" "5 0"
  expect_match "$(cat peer.err)" '^sent 0 bytes, received 3 bytes in '
}

# Whoever is gone when the answer comes is no reason to stop.
TestDatagramsAreAnsweredAfterOneWasLost() {
  not_for_classic_sockets
  start_serving -u echo
  local text
  for text in one two three; do
    run "$family" udp-send "$host" "$port" < <(printf %s "$text")
    expect_equal "$status" 0
  done
  run "$family" --answers 1 udp-send "$host" "$port" < <(printf "here")
  expect_equal "$status $(cat out)" "0 here"
}

set_up
"$test"

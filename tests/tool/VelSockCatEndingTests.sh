#!/usr/bin/env bash
# How velsock-cat's connections end, and what limits them.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

# Bytes that nobody has read would make the system reset the connection.
TestAPeerThatSpeaksAndReadsSlowlyGetsAll() {
  make_file
  start_listening --send-only <file
  connect_plainly
  printf banner >&3
  head -c 1000000 <&3 >received
  sleep 0.5
  cat <&3 >>received || true
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 0
  cmp file received
}

TestWhatIsSentOnlyAndNotTakenEndsWith4() {
  start_listening --send-only < <(printf text)
  connect_plainly
  wait_until_received 3
  # Closing with bytes unread resets the connection.
  exec 3>&-
  await_peer
  # A classic socket may have been closed before.
  if [ "$sockets" = classic ] && [ "$peer_status" = 0 ]; then return; fi
  expect_equal "$peer_status" 4
  expect_match "$(cat peer.err)" '^velsock-cat: cannot (receive from|send to) the peer: '
}

TestWhatIsSentOnlyIsFollowedByTheEnd() {
  start_listening --send-only < <(printf text)
  connect_plainly
  expect_equal "$(cat <&3)" text
  exec 3>&-
  await_peer
  expect_equal "$peer_status $(stat -c %s peer.out)" "0 0"
}

TestAPeerThatNeverEndsIsNotWaitedForForEver() {
  start_listening --send-only --recv-timeout 100 < <(printf text)
  connect_plainly
  await_peer
  exec 3>&-
  # A classic socket cannot tell the peer, and is closed.
  if [ "$sockets" = classic ]; then
    expect_equal "$peer_status" 0
    return
  fi
  expect_equal "$peer_status" 5
  expect_equal "$(cat peer.err)" \
    "velsock-cat: the peer has neither sent anything nor ended the connection for 100 ms after the end of the input"
}

TestTwoProgramsWithoutInputEnd() {
  start_listening </dev/null
  run "$family" connect "$host" "$port" </dev/null
  await_peer
  expect_equal "$status $peer_status" "0 0"
}

# expect_end_given OPTION...: the peer sees the end of what was sent, and can still answer. A classic socket ends both
# directions.
expect_end_given() {
  start_listening "$@" < <(printf question)
  connect_plainly
  expect_equal "$(cat <&3)" question
  [ "$sockets" = classic ] || printf answer >&3
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 0
  [ "$sockets" = classic ] || expect_equal "$(cat peer.out)" answer
}

TestAPeerThatWaitsForTheEndIsGivenOne() {
  expect_end_given
}

TestTheEndOfTheInputCanEndTheConnection() {
  expect_end_given -N
}

TestTheTimeAfterTheEndOfTheInputCanBeLimited() {
  local seconds
  for seconds in 0 0.05; do
    start_listening -q "$seconds" < <(printf text)
    connect_plainly
    await_peer
    expect_equal "$peer_status $(cat peer.err)" "0 "
    expect_equal "$(cat <&3)" text
    exec 3>&-
  done
}

TestWithoutALimitThePeerIsWaitedFor() {
  start_listening -q -1 < <(printf question)
  connect_plainly
  expect_equal "$(head -c 8 <&3)" question
  printf answer >&3
  exec 3>&-
  await_peer
  expect_equal "$peer_status $(cat peer.out)" "0 answer"
}

TestNobodyWhoConnectsInTimeEndsWith5() {
  run "$family" --accept-timeout 50 listen 0 </dev/null
  expect_equal "$status" 5
  expect_equal "$(tail -n 1 err)" "velsock-cat: nobody has connected within 50 ms"
}

TestALimitForAcceptingLeavesTheConnectionAsItIs() {
  start_listening --accept-timeout 60000 --receive-only </dev/null
  run "$family" --send-only connect "$host" "$port" < <(printf text)
  await_peer
  expect_equal "$status $peer_status $(cat peer.out)" "0 0 text"
}

# Nobody has the neighbour's address, and nobody tells.
TestASilentHostEndsWith5AfterTheConnectTimeOut() {
  [ "$sockets" = ipv6 ] || enter_own_network '10.7.7.1 velsock-ipv4' '127.0.0.1 localhost'
  lay_wire
  local silent=10.7.7.9
  if [ "$sockets" = ipv6 ]; then
    ip_command -6 address add fd77::1/64 dev wire nodad
    silent=fd77::9
  else
    ip_command address add 10.7.7.1/24 dev wire
  fi
  ip_command neigh add "$silent" lladdr 02:00:00:00:00:09 dev wire 2>/dev/null || exit "$not_run"
  run "$family" -w 0.2 connect "$silent" 80 </dev/null
  expect_equal "$status" 5
  expect_equal "$(cat err)" "velsock-cat: cannot connect to $silent port 80: Connection timed out (10060 SOCKET_ERR_TIMEDOUT)"
  run "$family" --connect-timeout=50 connect "$silent" 80 </dev/null
  expect_equal "$status" 5
}

TestALimitForConnectingLeavesTheConnectionAsItIs() {
  start_listening --receive-only </dev/null
  run "$family" -w 60 --send-only connect "$host" "$port" < <(printf text)
  await_peer
  expect_equal "$status $peer_status $(cat peer.out)" "0 0 text"
  run "$family" -w 60 connect "$host" "$port" </dev/null
  expect_equal "$status" 3
}

set_up
"$test"

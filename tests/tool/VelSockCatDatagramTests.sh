#!/usr/bin/env bash
# velsock-cat's datagrams seen from outside: what it writes and what it ends with.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

# start_receiving OPTION...: the program in the background on a free port.
start_receiving() {
  start "$family" "$@" udp-listen 0 </dev/null
}

# send OPTION...: what the program reads goes to the peer.
send() {
  run "$family" "$@" udp-send "$host" "$port"
  expect_equal "$status $(cat err)" "0 "
}

# The lengths of the datagrams that a peer with --trace packet has received.
received_lengths() {
  sed -nE 's/.* Network\/Packet Trace: Recv[a-z]+ ([0-9]+) bytes.*/\1/p; s/.*: Received ([0-9]+) bytes.*/\1/p' peer.err | xargs
}

TestEachReadIsOneDatagram() {
  start_receiving --count 3 --trace packet
  head -c 3000 /dev/urandom >file
  send <file
  await_peer
  expect_equal "$peer_status" 0
  cmp file peer.out
  expect_equal "$(received_lengths)" "1400 1400 200"
}

TestTheSizeOfDatagramsCanBeChosen() {
  start_receiving --count 2 --trace packet
  head -c 100000 /dev/urandom >file
  send --size 65507 --count 1 <file
  send --size 5 < <(printf short)
  await_peer
  expect_equal "$peer_status" 0
  cmp <(head -c 65507 file; printf short) peer.out
  expect_equal "$(received_lengths)" "65507 5"
}

TestTheCountEndsTheSender() {
  start_receiving --count 3
  send --size 1 --count 2 < <(printf abcdef)
  send --size 1 --count 1 < <(printf c)
  await_peer
  expect_equal "$(cat peer.out)" abc
}

TestACountOfNoneSendsNothing() {
  start_receiving --count 1
  send --count 0 < <(printf no)
  send < <(printf yes)
  await_peer
  expect_equal "$(cat peer.out)" yes
}

TestAnEmptyInputSendsNothing() {
  start_receiving --count 1
  send </dev/null
  send < <(printf yes)
  await_peer
  expect_equal "$(cat peer.out)" yes
}

TestEmptyDatagramsCount() {
  start_receiving --count 3
  send --size 0 --count 2 < <(printf unread)
  send < <(printf last)
  await_peer
  expect_equal "$peer_status" 0
  expect_equal "$(cat peer.out)" last
}

TestSendersAreShownWhenAskedFor() {
  if [ "$sockets" = classic ]; then
    expect_usage_error --classic --from udp-listen 0
    return
  fi
  start_receiving --count 2 --from
  send < <(printf hello)
  send --size 0 --count 1 </dev/null
  await_peer
  expect_equal "$(wc -l <peer.err)" 2
  expect_match "$(sed -n 1p peer.err)" "^5 bytes from $host port [1-9][0-9]*$"
  expect_match "$(sed -n 2p peer.err)" "^0 bytes from $host port [1-9][0-9]*$"
}

TestADatagramOfAnotherProgramArrives() {
  start_receiving --count 1
  printf plain >"/dev/udp/$host/$port"
  await_peer
  expect_equal "$(cat peer.out)" plain
}

TestTheOtherFamilySendsAsWellWhereItSpeaksTheIpVersion() {
  [ "$sockets" != classic ] || enter_own_network '127.0.0.1 velsock-ipv4' '127.0.0.1 localhost'
  start_receiving --count 1
  local other=--classic
  [ "$sockets" != classic ] || other=--xt
  run "$other" udp-send "$host" "$port" < <(printf other)
  if [ "$host" = 127.0.0.1 ]; then
    await_peer
    expect_equal "$status $(cat peer.out)" "0 other"
  else
    expect_equal "$status" 2
  fi
}

TestTheIpVersionCanBeChosen() {
  if [ "$sockets" = classic ]; then
    expect_usage_error --classic -6 udp-listen 0
    return
  fi
  [ "$sockets" = ipv6 ] || enter_own_network '127.0.0.1 velsock-ipv4' '::1 localhost'
  local version
  for version in -4 -6; do
    start_receiving "$version" --count 1
    expect_equal "$host" "$([ "$version" = -4 ] && echo 127.0.0.1 || echo ::1)"
    send "$version" < <(printf text)
    await_peer
    expect_equal "$(cat peer.out)" text
  done
}

# An independent peer that sends back what it gets.
start_echo() {
  command -v socat >/dev/null || exit "$not_run"
  start_receiving
  kill "$peer"
  await_peer
  local listening=UDP4-RECVFROM address=$host
  if [ "$host" = ::1 ]; then listening=UDP6-RECVFROM address="[::1]"; fi
  socat "$listening:$port,bind=$address,fork" EXEC:cat &
  peer=$!
  local attempt
  for attempt in {1..100}; do
    run "$family" --answers 1 --recv-timeout 500 udp-send "$host" "$port" < <(printf ping)
    [ "$status" != 0 ] || return 0
  done
  fail "nobody answered $attempt times"
}

TestAnswersAreShownWhenAskedFor() {
  start_echo
  expect_equal "$(cat out)" ping
  run "$family" --size 3 --answers 2 udp-send "$host" "$port" < <(printf onetwo)
  expect_equal "$status $(cat err)" "0 "
  expect_match "$(cat out)" '^(onetwo|twoone)$'
  [ "$sockets" != classic ] || return 0
  run "$family" --answers 1 --from udp-send "$host" "$port" < <(printf hello)
  expect_equal "$status $(cat out) $(cat err)" "0 hello 5 bytes from $host port $port"
}

TestAllAnswersAreShownUntilSilence() {
  start_echo
  run "$family" --size 3 --answers 0 --recv-timeout 1000 udp-send "$host" "$port" < <(printf onetwo)
  expect_equal "$status $(cat err)" "0 "
  expect_match "$(cat out)" '^(onetwo|twoone)$'
}

TestAMissingAnswerEndsWith5() {
  start_receiving
  run "$family" --answers 1 --recv-timeout 50 udp-send "$host" "$port" < <(printf question)
  expect_equal "$status" 5
  expect_match "$(cat err)" '^velsock-cat: cannot receive: Connection timed out \(10060 SOCKET_ERR_TIMEDOUT\)$'
}

TestSilenceEndsWith5AfterTheReceiveTimeOut() {
  start_receiving --recv-timeout 50
  await_peer
  expect_equal "$peer_status" 5
  expect_match "$(cat peer.err)" '^velsock-cat: cannot receive: Connection timed out \(10060 SOCKET_ERR_TIMEDOUT\)$'
}

TestADatagramThatIsTooLongEndsWith4() {
  start_receiving
  head -c 65535 /dev/zero >file
  run "$family" --size 65535 udp-send "$host" "$port" <file
  expect_equal "$status" 4
  expect_match "$(cat err)" '^velsock-cat: cannot send.*: Message too long \(10040 SOCKET_ERR_MSGSIZE\)$'
}

TestAHostThatDoesNotResolveEndsWith2() {
  run "$family" udp-send name.invalid 80 < <(printf lost)
  expect_equal "$status" 2
  run "$family" udp-listen name.invalid 80 </dev/null
  expect_equal "$status" 2
}

TestAPortInUseEndsWith3() {
  start_receiving
  run "$family" udp-listen "$port" </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" '^velsock-cat: cannot listen on .*: Address already in use \(10048 SOCKET_ERR_ADDRINUSE\)$'
}

TestAPortInUseCanBeSharedWhenAllAgree() {
  start_receiving --reuse
  local first=$peer
  launch "$velsock_cat" "$family" --reuse udp-listen "$port" </dev/null || fail "the port is not shared"
  kill "$first"
}

TestAFullOutputEndsWith6() {
  ln -s /dev/full peer.out
  start_receiving --count 1
  send < <(printf text)
  await_peer
  expect_equal "$peer_status" 6
  expect_reason "$(cat peer.err)" "velsock-cat: Cannot write standard output" "No space left on device"
}

TestAnUnreadableInputEndsWith6() {
  run "$family" udp-send localhost 9 <"$folder"
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-cat: Cannot read standard input" "Is a directory"
}

set_up
"$test"

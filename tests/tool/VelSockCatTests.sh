#!/usr/bin/env bash
# velsock-cat's connections seen from outside: what it writes and what it ends with.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

# The beginning of the library's own text.
library_text() {
  if [ "$sockets" = classic ]; then echo "VelNet::SocketImpl::$1\(\) - FAIL\."; else echo "VelNet::SocketXtImpl::$1 , "; fi
}

TestAHostThatDoesNotResolveEndsWith2() {
  local name
  for name in name.invalid 256.1.2.3 1.2.3.4.5 . ... "$(printf 'x%.0s' {1..5000})" $'\xff\xfe'; do
    run "$family" connect "$name" 80 </dev/null
    expect_equal "$status" 2
    expect_equal "$(wc -l <err)" 1
    expect_match "$(cat err)" "^velsock-cat: cannot connect to .* port 80: (.* \(110[0-9]+ SOCKET_ERR_[A-Z_]+\)|VelNet::.*::ConvertDotted.*)$"
  done
}

TestControlCharactersOfAHostStayOnOneLine() {
  run "$family" connect $'no\nsuch\e[31mhost.invalid' 80 </dev/null
  expect_equal "$status" 2
  expect_equal "$(wc -l <err)" 1
  expect_match "$(cat err)" 'no\\x0Asuch\\x1B\[31mhost\.invalid'
}

TestTheLibrarysTextIsShownOnRequest() {
  start_listening </dev/null
  kill "$peer"
  await_peer
  run "$family" -v connect "$host" "$port" </dev/null
  expect_equal "$status" 3
  expect_equal "$(wc -l <err)" 3
  expect_match "$(sed -n 1p err)" "^velsock-cat: cannot connect to $host port $port: Connection refused "
  expect_equal "$(sed -n 2p err)" "  $host: Connection refused (10061 SOCKET_ERR_CONNREFUSED)"
  expect_match "$(sed -n 3p err)" "^  $(library_text Connect).*$host:$port.* errno = 10061 \(SOCKET_ERR_CONNREFUSED\) Connection refused$"
}

TestWhoIsConnectedIsShownOnRequest() {
  start_listening -v --receive-only </dev/null
  run "$family" -v --send-only connect "$host" "$port" </dev/null
  await_peer
  expect_equal "$status $(cat err)" "0 velsock-cat: connected to $host port $port"
  expect_match "$(cat peer.err)" "^velsock-cat: connection from $host port [1-9][0-9]*$"
}

# The library's failure would be that of the address which the socket cannot use.
TestARefusedNameOfBothVersionsIsRefused() {
  [ "$sockets" = ipv6 ] || enter_own_network '127.0.0.1 velsock-ipv4' '127.0.0.1 localhost' '::1 localhost'
  run "$family" -v connect localhost 1 </dev/null
  expect_equal "$status" 3
  expect_equal "$(head -n 1 err)" \
    "velsock-cat: cannot connect to localhost port 1: Connection refused (10061 SOCKET_ERR_CONNREFUSED)"
  local tried=127.0.0.1 other=::1 version=IPv4
  if [ "$sockets" = ipv6 ]; then tried=::1 other=127.0.0.1 version=IPv6; fi
  grep -qxF "  $tried: Connection refused (10061 SOCKET_ERR_CONNREFUSED)" err || fail "$tried is not named"
  [ "$sockets" = classic ] || grep -qxF "  $other: not tried, the socket speaks $version" err || fail "$other is not named"
}

# The first is refused, as nobody listens on it.
TestTheAddressesOfANameAreTriedOneByOne() {
  [ "$sockets" = ipv6 ] || enter_own_network '127.0.0.1 velsock-ipv4'
  printf '%s\n' '127.0.0.1 many' '127.0.0.2 many' >>hosts
  local version=--classic first second=127.0.0.1
  [ "$sockets" = classic ] || version=-4
  run "$version" -v connect many 1 </dev/null
  first=$(sed -nE '2s/^  ([0-9.]+): .*/\1/p' err)
  expect_match "$first" '^127\.0\.0\.[12]$'
  [ "$first" != "$second" ] || second=127.0.0.2
  launch "$velsock_cat" "$version" --receive-only listen "$second" 0 </dev/null || fail "nothing was announced"
  run "$version" -v --send-only connect many "$port" < <(printf text)
  await_peer
  expect_equal "$status $peer_status $(cat peer.out)" "0 0 text"
  expect_equal "$(cat err)" "velsock-cat: $first: Connection refused (10061 SOCKET_ERR_CONNREFUSED)
velsock-cat: connected to $second port $port"
}

# The hosts file has a loopback address for it, or none of the socket's version; the library takes the interface's.
TestTheOwnNameIsWhatTheLibraryTakesItFor() {
  [ "$sockets" = ipv6 ] || enter_own_network '127.0.1.1 velsock-ipv4'
  lay_wire
  ip_command address add 10.7.7.1/24 dev wire
  local version=--classic name
  [ "$sockets" = classic ] || version=-4
  launch "$velsock_cat" "$version" --receive-only listen 10.7.7.1 0 </dev/null || fail "nothing was announced"
  name=$(uname -n)
  run "$version" --send-only connect "${name^^}" "$port" < <(printf text)
  expect_equal "$status $(cat err)" "0 "
  await_peer
  expect_equal "$peer_status $(cat peer.out)" "0 text"
}

TestAPortMayBeAService() {
  local loopback=::1
  if [ "$sockets" != ipv6 ]; then
    enter_own_network '127.0.0.1 velsock-ipv4'
    loopback=127.0.0.1
  fi
  getent services echo >/dev/null || exit "$not_run"
  run "$family" connect "$loopback" echo </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" "^velsock-cat: cannot connect to $loopback port 7: Connection refused "
}

TestListeningTakesTheLoopbackAddress() {
  start_listening </dev/null
  case $sockets in
    classic) expect_equal "$host" 127.0.0.1 ;;
    xt) expect_match "$host" '^(127\.0\.0\.1|::1)$' ;;
    ipv6) expect_equal "$host" ::1 ;;
  esac
}

TestARefusedConnectionEndsWith3() {
  start_listening </dev/null
  kill "$peer"
  await_peer
  run "$family" connect "$host" "$port" </dev/null
  expect_equal "$status" 3
  expect_equal "$(wc -l <err)" 1
  expect_match "$(cat err)" "^velsock-cat: cannot connect to $host port $port: Connection refused \(10061 SOCKET_ERR_CONNREFUSED\)$"
}

TestAPortInUseEndsWith3() {
  start_listening </dev/null
  run "$family" listen "$port" </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" "^velsock-cat: cannot listen on $host port $port: Address already in use \(10048 SOCKET_ERR_ADDRINUSE\)$"
}

TestAPortInUseCanBeSharedWhenAllAgree() {
  start_listening --reuse </dev/null
  local first=$peer
  launch "$velsock_cat" "$family" --reuse listen "$port" </dev/null || fail "the port is not shared"
  kill "$first"
}

TestAnAddressThatIsNotLocalEndsWith3() {
  start_listening </dev/null
  local foreign=192.0.2.1
  [ "$host" = 127.0.0.1 ] || foreign=2001:db8::1
  run "$family" listen "$foreign" "$port" </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" "^velsock-cat: cannot listen on $foreign port $port: Cannot assign requested address \(10049 SOCKET_ERR_ADDRNOTAVAIL\)$"
}

TestAnAddressOfTheOtherIpVersionEndsWith3AndAWordOnTheSocket() {
  start_listening </dev/null
  if [ "$sockets" = classic ]; then
    run "$family" connect ::1 "$port" </dev/null
    expect_equal "$status" 2
  elif [ "$host" = ::1 ]; then
    run "$family" connect 127.0.0.1 "$port" </dev/null
    expect_equal "$status" 3
    expect_match "$(cat err)" "\(100(14 SOCKET_ERR_FAULT|47 SOCKET_ERR_AFNOSUPPORT)\); the socket speaks IPv6 because the first address of this computer's name does; -4 chooses IPv4$"
  else
    run "$family" connect ::1 "$port" </dev/null
    expect_equal "$status" 3
    expect_match "$(cat err)" "no IPv4 address of it can be used \(100(14 SOCKET_ERR_FAULT|47 SOCKET_ERR_AFNOSUPPORT)\); the socket speaks IPv4 because the first address of this computer's name does; -6 chooses IPv6$"
  fi
  expect_equal "$(wc -l <err)" 1
}

TestTheIpVersionCanBeChosen() {
  if [ "$sockets" = classic ]; then
    expect_usage_error --classic -6 connect ::1 80
    start_listening -4 </dev/null
    return
  fi
  [ "$sockets" = ipv6 ] || enter_own_network '127.0.0.1 velsock-ipv4' '::1 localhost'
  local version loopback
  for version in -4 -6; do
    loopback=$([ "$version" = -4 ] && echo 127.0.0.1 || echo ::1)
    start_listening "$version" --send-only < <(echo text)
    expect_equal "$host" "$loopback"
    run "$version" --receive-only connect "$loopback" "$port" </dev/null
    await_peer
    expect_equal "$status $peer_status $(cat out)" "0 0 text"
  done
}

TestAChosenIpVersionThatDoesNotFitEndsWith3() {
  run "$family" -4 connect ::1 80 </dev/null
  if [ "$sockets" = classic ]; then
    expect_equal "$status" 2
    return
  fi
  expect_equal "$status" 3
  expect_match "$(cat err)" '; the socket speaks IPv4$'
}

TestAFileGoesFromTheClientToTheServer() {
  make_file
  start_listening --receive-only </dev/null
  run "$family" --send-only connect "$host" "$port" <file
  await_peer
  expect_equal "$status $peer_status" "0 0"
  cmp file peer.out
}

TestAFileGoesFromTheServerToTheClient() {
  make_file
  start_listening --send-only <file
  run "$family" --receive-only connect "$host" "$port" </dev/null
  await_peer
  expect_equal "$status $peer_status" "0 0"
  cmp file out
}

# A text stream would end at the first of these bytes, or have more or fewer of the others.
TestNoByteMeansAnything() {
  printf '\x1a\n\r\n\r\x1a\0\n\r\r\n\xff\x04\x1a' >file
  start_listening --send-only <file
  run "$family" --receive-only connect "$host" "$port" </dev/null
  await_peer
  expect_equal "$status $peer_status" "0 0"
  cmp file out
  start_listening --receive-only </dev/null
  run "$family" --send-only connect "$host" "$port" < <(cat file)
  await_peer
  cmp file peer.out
}

# Of a name's addresses, each family takes the one that fits.
# The name is to have an address of the server's version, whatever the machine's hosts are.
TestAClientFindsTheServerByName() {
  [ "$sockets" != xt ] || enter_own_network '127.0.0.1 velsock-ipv4' '127.0.0.1 localhost'
  start_listening --send-only < <(echo text)
  run "$family" --receive-only connect localhost "$port" </dev/null
  await_peer
  expect_equal "$status $peer_status $(cat out)" "0 0 text"
}

TestBothDirectionsMoveAtOnce() {
  make_file
  start_listening <file
  connect_plainly
  head -c 3000001 <&3 >received &
  local receiver=$!
  cat file >&3
  wait "$receiver"
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 0
  cmp file received
  cmp file peer.out
}

TestAtTheEndOfTheInputItGoesOnReceiving() {
  start_listening < <(printf question)
  connect_plainly
  expect_equal "$(head -c 8 <&3)" question
  printf answer >&3
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 0
  expect_equal "$(cat peer.out)" answer
}

TestWhenThePeerClosesItDoesNotWaitForMoreInput() {
  mkfifo silence
  exec 4<>silence
  start_listening --trace connection <&4
  connect_plainly
  printf farewell >&3
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 0
  expect_equal "$(cat peer.out)" farewell
  expect_match "$(tail -n 1 peer.err)" ' Network/Connection Trace: Disconnected, Local address: '
}

TestAPeerThatResetsEndsWith4() {
  mkfifo silence
  exec 4<>silence
  start_listening <&4
  connect_plainly
  # Closing with a byte unread resets the connection.
  printf x >&4
  IFS= read -r -n 1 -u 3 _ || true
  printf yz >&4
  wait_until_received 3
  exec 3>&-
  await_peer
  expect_equal "$peer_status" 4
  expect_equal "$(wc -l <peer.err)" 1
  expect_match "$(cat peer.err)" "^velsock-cat: cannot (receive from|send to) the peer: .* \(1005[34] SOCKET_ERR_CONN(ABORTED|RESET)\)$"
}

TestASilentPeerEndsWith5AfterTheReceiveTimeOut() {
  start_listening --receive-only --recv-timeout 50 </dev/null
  connect_plainly
  await_peer
  expect_equal "$peer_status" 5
  expect_match "$(cat peer.err)" "^velsock-cat: cannot receive from the peer: Connection timed out \(10060 SOCKET_ERR_TIMEDOUT\)$"
}

TestAPeerThatTakesNothingEndsWith5AfterTheSendTimeOut() {
  start_listening --send-timeout 50 </dev/zero
  connect_plainly
  await_peer
  expect_equal "$peer_status" 5
  expect_match "$(cat peer.err)" "^velsock-cat: cannot send to the peer: Connection timed out \(10060 SOCKET_ERR_TIMEDOUT\)$"
}

TestAFullOutputEndsWith6() {
  start_listening --send-only < <(echo text)
  status=0
  "$velsock_cat" "$family" --receive-only connect "$host" "$port" </dev/null >/dev/full 2>err || status=$?
  read_messages err
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-cat: Cannot write standard output" "No space left on device"
}

TestABrokenOutputPipeEndsWith6() {
  start_listening --send-only </dev/zero
  mkfifo output
  # A pipe whose only reader has gone: a fifo opens for writing alone once it has had one.
  exec 5<>output
  exec 6>output
  exec 5<&-
  status=0
  "$velsock_cat" "$family" --receive-only connect "$host" "$port" </dev/null >&6 2>err || status=$?
  read_messages err
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-cat: Cannot write standard output" "Broken pipe"
}

TestAClosedOutputEndsWith6AndNeverReachesThePeer() {
  start_listening --send-only < <(echo text)
  status=0
  "$velsock_cat" "$family" --receive-only connect "$host" "$port" </dev/null >&- 2>err || status=$?
  read_messages err
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-cat: Cannot write standard output" "Bad file descriptor"
}

TestAnUnreadableInputEndsWith6() {
  start_listening --receive-only </dev/null
  run "$family" --send-only connect "$host" "$port" <"$folder"
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-cat: Cannot read standard input" "Is a directory"
}

TestAnUnreadableInputEndsTheExchangeWhileThePeerIsSilent() {
  start_listening <"$folder"
  connect_plainly
  await_peer
  expect_equal "$peer_status" 6
}

TestALogFileThatCannotBeOpenedEndsWith6() {
  run "$family" --trace error --log-file "$folder/none/log" connect 127.0.0.1 1 </dev/null
  expect_equal "$status" 6
  expect_equal "$(wc -l <err)" 1
  expect_match "$(cat err)" "^velsock-cat: .*$folder/none/log"
}

TestTraceShowsTheChosenRecordsAlone() {
  start_listening --receive-only </dev/null
  run "$family" --send-only --trace connection,verbose connect "$host" "$port" < <(printf '\001\377A')
  await_peer
  expect_equal "$(wc -l <err)" 3
  expect_match "$(sed -n 1p err)" " Network/Connection Trace: Connected, Local address: .*, Remote address: $host \($port\)"
  expect_match "$(sed -n 2p err)" ' Network/Verbose Packet Trace: Sent 3 bytes, .*, data: '
  expect_match "$(sed -n 3p err)" ' Network/Connection Trace: Disconnected, '
  expect_equal "$(stat -c %s peer.err)" 0
}

TestTraceGoesToTheLogFileInstead() {
  start_listening --receive-only </dev/null
  run "$family" --send-only --trace packet --log-file log connect "$host" "$port" < <(printf text)
  await_peer
  expect_equal "$(stat -c %s err)" 0
  expect_equal "$(wc -l <log)" 1
  expect_match "$(cat log)" ' Network/Packet Trace: Sent 4 bytes, '
}

TestATextSaysWhatIsLoggedAndWhere() {
  start_listening --receive-only </dev/null
  run "$family" --send-only --log 'Network/Packet*=on, file:log;format=json' connect "$host" "$port" < <(printf text)
  await_peer
  expect_equal "$(stat -c %s err)" 0
  expect_equal "$(wc -l <log)" 1
  expect_match "$(cat log)" '^\{"time":".*,"connection":1,"router":"Network","category":"Packet Trace","text":"Sent 4 bytes, .*"\}$'
  run "$family" --log "file:$folder/none/log" connect 127.0.0.1 1 </dev/null
  expect_equal "$status" 6
  expect_match "$(cat err)" "cannot open the log file $folder/none/log: "
}

set_up
"$test"

#!/usr/bin/env bash
# velsock-cat seen from outside: what it writes and what it ends with.
#
#   VelSockCatTests.sh VELSOCK_CAT TEST
set -euo pipefail

velsock_cat=$(realpath "$1")
folder=$(mktemp -d)
cd "$folder"

peer=""
tidy_up() {
  [ -z "$peer" ] || kill "$peer" 2>/dev/null || true
  rm -rf "$folder"
}
trap tidy_up EXIT

fail() {
  echo "$1" >&2
  exit 1
}

expect_equal() {
  [ "$1" = "$2" ] || fail "expected '$2' but saw '$1'"
}

expect_match() {
  [[ $1 =~ $2 ]] || fail "expected a match of '$2' but saw '$1'"
}

# Runs the program in the foreground; its code, outputs and failure line are left in status, out and err.
run() {
  status=0
  "$velsock_cat" "$@" >out 2>err || status=$?
}

# start_listening OPTION... <INPUT: the program in the background on a port that it chose; sets peer, port.
# Its standard output goes to peer.out.
start_listening() {
  mkfifo says.pipe
  "$velsock_cat" "$@" listen 0 <&0 >peer.out 2>says.pipe &
  peer=$!
  exec {says}<says.pipe
  local line
  read -r line <&"$says" || fail "nothing was announced"
  expect_match "$line" '^listening on 127\.0\.0\.1 port [1-9][0-9]*$'
  port=${line##* }
}

# Sets peer_status; what the program has said since it announced its port is in peer.err.
await_peer() {
  peer_status=0
  cat <&"$says" >peer.err
  wait "$peer" || peer_status=$?
  peer=""
}

# An independent peer on descriptor 3.
connect_plainly() {
  exec 3<>"/dev/tcp/127.0.0.1/$port"
}

make_file() {
  head -c 3000001 /dev/urandom >file
}

take_closed_port() {
  start_listening </dev/null
  kill "$peer"
  await_peer
  rm says.pipe
}

expect_usage_error() {
  run "$@" </dev/null
  expect_equal "$status" 1
  expect_equal "$(wc -l <err)" 1
  expect_equal "$(stat -c %s out)" 0
  expect_match "$(cat err)" '^velsock-cat: .*; see velsock-cat --help$'
}

TestHelpGoesToStandardOutput() {
  run --help
  expect_equal "$status" 0
  expect_equal "$(stat -c %s err)" 0
  expect_match "$(cat out)" 'Usage:'
  local code
  for code in 0 1 2 3 4 5 6; do
    grep -q "^  $code  " out || fail "exit code $code is not explained"
  done
}

TestVersionGoesToStandardOutput() {
  run --version
  expect_equal "$status" 0
  expect_match "$(cat out)" '^velsock-cat [0-9]+\.[0-9]+\.[0-9]+$'
}

TestNoArgumentsAreWrongUsage() { expect_usage_error; }

TestAnUnknownCommandIsWrongUsage() { expect_usage_error converse 127.0.0.1 80; }

TestAnUnknownOptionIsWrongUsage() { expect_usage_error --loud connect 127.0.0.1 80; }

TestAnOptionWithoutItsValueIsWrongUsage() {
  expect_usage_error connect 127.0.0.1 80 --recv-timeout
  expect_usage_error connect 127.0.0.1 80 --trace
}

TestAMissingOrSurplusOperandIsWrongUsage() {
  expect_usage_error listen
  expect_usage_error listen 127.0.0.1 80 81
  expect_usage_error connect 80
  expect_usage_error connect 127.0.0.1 80 81
}

TestAPortThatIsNoPortIsWrongUsage() {
  local text
  for text in 80x x80 '' ' 80' '80 ' +80 0x50 8.0 70000 65536 4294967376 99999999999999999999 $'80\n'; do
    expect_usage_error connect 127.0.0.1 "$text"
    expect_usage_error listen "$text"
  done
  expect_usage_error listen -- -1
  expect_usage_error connect 127.0.0.1 0
}

TestATimeOutThatIsNoNumberIsWrongUsage() {
  local text
  for text in 1s -1 '' 1.5 4294967296; do
    expect_usage_error --recv-timeout "$text" connect 127.0.0.1 80
    expect_usage_error --send-timeout "$text" connect 127.0.0.1 80
  done
}

TestATraceListWithAnUnknownOrEmptyItemIsWrongUsage() {
  local list
  for list in everything 'connection,' ',packet' 'connection,,packet' Packet ''; do
    expect_usage_error --trace "$list" connect 127.0.0.1 80
  done
}

TestContradictingDirectionsAreWrongUsage() {
  expect_usage_error --send-only --receive-only connect 127.0.0.1 80
}

TestALogFileWithoutTraceIsWrongUsage() { expect_usage_error --log-file log connect 127.0.0.1 80; }

TestAnEmptyHostIsWrongUsage() {
  expect_usage_error connect '' 80
  expect_usage_error listen '' 80
}

TestAHostThatDoesNotResolveEndsWith2() {
  local host
  for host in name.invalid 256.1.2.3 1.2.3.4.5 . ... "$(printf 'x%.0s' {1..5000})" $'\xff\xfe'; do
    run connect "$host" 80 </dev/null
    expect_equal "$status" 2
    expect_equal "$(wc -l <err)" 1
    expect_match "$(cat err)" '^velsock-cat: VelNet::SocketAddress::.* \(code -?[0-9]+\)$'
  done
}

TestControlCharactersOfAHostStayOnOneLine() {
  run connect $'no\nsuch\e[31mhost.invalid' 80 </dev/null
  expect_equal "$status" 2
  expect_equal "$(wc -l <err)" 1
  expect_match "$(cat err)" 'no\\x0Asuch\\x1B\[31mhost\.invalid'
}

TestARefusedConnectionEndsWith3() {
  take_closed_port
  run connect 127.0.0.1 "$port" </dev/null
  expect_equal "$status" 3
  expect_equal "$(wc -l <err)" 1
  expect_match "$(cat err)" "^velsock-cat: VelNet::SocketImpl::Connect\(\) - FAIL\. Cannot connect to a socket: 127\.0\.0\.1:$port.*Connection refused \(code 10061\)$"
}

TestAPortInUseEndsWith3() {
  start_listening </dev/null
  run listen "$port" </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" '^velsock-cat: VelNet::SocketImpl::Bind\(\) - FAIL\..* \(code 10048\)$'
}

TestAnAddressThatIsNotLocalEndsWith3() {
  run listen 192.0.2.1 0 </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" '^velsock-cat: VelNet::SocketImpl::Bind\(\) - FAIL\..* \(code 10049\)$'
}

TestAFileGoesFromTheClientToTheServer() {
  make_file
  start_listening --receive-only </dev/null
  run --send-only connect 127.0.0.1 "$port" <file
  await_peer
  expect_equal "$status $peer_status" "0 0"
  cmp file peer.out
}

TestAFileGoesFromTheServerToTheClient() {
  make_file
  start_listening --send-only <file
  run --receive-only connect localhost "$port" </dev/null
  await_peer
  expect_equal "$status $peer_status" "0 0"
  cmp file out
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
  expect_match "$(tail -n 1 peer.err)" 'Disconnected, Local address: 127\.0\.0\.1 \([0-9]+\)|Disconnected, Local address: 0\.0\.0\.0'
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
  expect_match "$(cat peer.err)" '^velsock-cat: VelNet::SocketImpl::(Receive|Send)\(\) - FAIL\..* \(code 1005[34]\)$'
}

# Bash's zero time-out only asks whether there is something to read.
wait_until_received() {
  until read -r -t 0 -u "$1"; do :; done
}

TestASilentPeerEndsWith5AfterTheReceiveTimeOut() {
  start_listening --receive-only --recv-timeout 50 </dev/null
  connect_plainly
  await_peer
  expect_equal "$peer_status" 5
  expect_match "$(cat peer.err)" '^velsock-cat: VelNet::SocketImpl::Receive\(\) - FAIL\..* \(code 10060\)$'
}

TestAPeerThatTakesNothingEndsWith5AfterTheSendTimeOut() {
  start_listening --send-timeout 50 </dev/zero
  connect_plainly
  await_peer
  expect_equal "$peer_status" 5
  expect_match "$(cat peer.err)" '^velsock-cat: VelNet::SocketImpl::Send\(\) - FAIL\..* \(code 10060\)$'
}

TestAFullOutputEndsWith6() {
  start_listening --send-only < <(echo text)
  status=0
  "$velsock_cat" --receive-only connect 127.0.0.1 "$port" </dev/null >/dev/full 2>err || status=$?
  expect_equal "$status" 6
  expect_equal "$(cat err)" "velsock-cat: Cannot write standard output: No space left on device"
}

TestABrokenOutputPipeEndsWith6() {
  start_listening --send-only </dev/zero
  mkfifo output
  # A pipe whose only reader has gone: a fifo opens for writing alone once it has had one.
  exec 5<>output
  exec 6>output
  exec 5<&-
  status=0
  "$velsock_cat" --receive-only connect 127.0.0.1 "$port" </dev/null >&6 2>err || status=$?
  expect_equal "$status" 6
  expect_equal "$(cat err)" "velsock-cat: Cannot write standard output: Broken pipe"
}

TestAClosedOutputEndsWith6AndNeverReachesThePeer() {
  start_listening --send-only < <(echo text)
  status=0
  "$velsock_cat" --receive-only connect 127.0.0.1 "$port" </dev/null >&- 2>err || status=$?
  expect_equal "$status" 6
  expect_equal "$(cat err)" "velsock-cat: Cannot write standard output: Bad file descriptor"
}

TestAnUnreadableInputEndsWith6() {
  start_listening --receive-only </dev/null
  run --send-only connect 127.0.0.1 "$port" <"$folder"
  expect_equal "$status" 6
  expect_equal "$(cat err)" "velsock-cat: Cannot read standard input: Is a directory"
}

TestAnUnreadableInputEndsTheExchangeWhileThePeerIsSilent() {
  start_listening <"$folder"
  connect_plainly
  await_peer
  expect_equal "$peer_status" 6
}

TestALogFileThatCannotBeOpenedEndsWith6() {
  run --trace error --log-file "$folder/none/log" connect 127.0.0.1 1 </dev/null
  expect_equal "$status" 6
  expect_equal "$(wc -l <err)" 1
  expect_match "$(cat err)" "^velsock-cat: .*$folder/none/log"
}

TestTraceShowsTheChosenRecordsAlone() {
  start_listening --receive-only </dev/null
  run --send-only --trace connection,verbose connect 127.0.0.1 "$port" < <(printf '\001\377A')
  await_peer
  expect_equal "$(wc -l <err)" 3
  expect_match "$(sed -n 1p err)" ' Network/Connection Trace: Connected, Local address: 127\.0\.0\.1 '
  expect_match "$(sed -n 2p err)" ' Network/Verbose Packet Trace: Sent 3 bytes, .*, data: '
  expect_match "$(sed -n 3p err)" ' Network/Connection Trace: Disconnected, '
  expect_equal "$(stat -c %s peer.err)" 0
}

TestTraceGoesToTheLogFileInstead() {
  start_listening --receive-only </dev/null
  run --send-only --trace packet --log-file log connect 127.0.0.1 "$port" < <(printf text)
  await_peer
  expect_equal "$(stat -c %s err)" 0
  expect_equal "$(wc -l <log)" 1
  expect_match "$(cat log)" ' Network/Packet Trace: Sent 4 bytes, '
}

"$2"

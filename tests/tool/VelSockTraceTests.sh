#!/usr/bin/env bash
# velsock-trace seen from outside: what it reads and what it makes of it.
#
#   VelSockTraceTests.sh VELSOCK_TRACE VELSOCK_CAT TEST
set -euo pipefail

script=$(realpath "${BASH_SOURCE[0]}")
program=$(realpath "$1")
velsock_cat=$(realpath "$2")
script_arguments=("$program" "$velsock_cat" "$3")
# shellcheck source=Tool.sh
source "$(dirname "$script")/Tool.sh"

# say SECOND CATEGORY TEXT: a line of the plain form.
say() {
  printf '2026-11-22T13:01:%s.000250Z Network/%s: %s\n' "$@"
}

# transfer SECOND VERB BYTES ENDS HEX: the pair of records that a transfer has.
transfer() {
  say "$1" "Packet Trace" "$2 $3 bytes, $4"
  say "$1" "Verbose Packet Trace" "$2 $3 bytes, $4, data: $5"
}

client='Local address: 10.0.0.1 (40000), Remote address: 10.0.0.2 (8007)'
server='Local address: 10.0.0.2 (8007), Remote address: 10.0.0.1 (40000)'
client6='Local address: fd00::1 (40000), Remote address: fd00::2 (8007)'
sender='Local address: vm (Random Port), Remote address: 10.0.0.9 (5300)'

# A request and its answer, in the logs of both ends.
make_logs() {
  {
    say 00 "Connection Trace" "Connected, $client"
    transfer 01 Sent 6 "$client" 68656C6C6F0A
    transfer 03 Received 5 "$client" 61FFFFFF80FFFFFFFF000A
    say 04 "Connection Trace" "Disconnected, $client"
  } >client.log
  {
    say 00 "Connection Trace" "Connected, $server"
    transfer 02 Received 6 "$server" 68656C6C6F0A
    transfer 03 Sent 5 "$server" 61FFFFFF80FFFFFFFF000A
    say 05 "Connection Trace" "Disconnected, $server"
  } >server.log
}

# The columns of a list without its head.
columns() {
  sed 1d out | awk '{ print $1, $4, $5, $6, $7, $8, $9 }'
}

expect_columns() {
  expect_equal "$status" 0
  expect_equal "$(columns)" "$1"
}

# analyse FILTER FIELD...: what tshark finds in the capture, with checksums verified. What the bytes may look like, to a
# dissector that goes by their port, is not its business.
analyse() {
  local filter=$1 fields=() field
  shift
  for field in "$@"; do fields+=(-e "$field"); done
  tshark -r capture -d tcp.port==1-65535,data -d udp.port==1-65535,data -o ip.check_checksum:TRUE \
    -o tcp.check_checksum:TRUE -o udp.check_checksum:TRUE -Y "$filter" -T fields "${fields[@]}" 2>tshark.log || fail "$(cat tshark.log)"
}

# Warnings begin at that severity.
expect_sound_capture() {
  local faults='_ws.malformed || ip.checksum.status == 0 || tcp.checksum.status == 0 || udp.checksum.status == 0'
  expect_equal "$(analyse "$faults || _ws.expert.severity >= 6291456" frame.number _ws.expert.message)" ""
  [ -n "$(analyse "ip.checksum.status == 1 || ipv6" frame.number)" ] || fail "no checksum was verified"
}

# expect_stream STREAM FROM_CLIENT FROM_SERVER: what tshark puts together, in hexadecimal.
expect_stream() {
  tshark -r capture -q -z "follow,tcp,raw,$1" 2>/dev/null >followed
  expect_equal "$(sed -n '7,$p' followed | grep -v '^=' | grep -v $'^\t' | tr -d '\n')" "$2"
  expect_equal "$(sed -n '7,$p' followed | grep $'^\t' | tr -d '\t\n')" "$3"
}

TestHelpGoesToStandardOutput() {
  run --help
  expect_equal "$status $(cat err)" "0 "
  local word
  for word in list show --address --port --from --kind --follow --json --hex --pcapng --html; do
    grep -q -e "$word" out || fail "$word is not explained"
  done
  for word in 0 1 6 8; do
    grep -q "^  $word  " out || fail "exit code $word is not explained"
  done
}

TestWrongUsageEndsWith1() {
  make_logs
  expect_usage_error
  expect_usage_error look client.log
  expect_usage_error list
  expect_usage_error show client.log
  expect_usage_error show 0 client.log
  expect_usage_error show x client.log
  expect_usage_error show 1
  expect_usage_error --port 70000 list client.log
  expect_usage_error --from yesterday list client.log
  expect_usage_error --kind cat list client.log
  expect_usage_error --hex list client.log
  expect_usage_error --json show 1 client.log
  expect_usage_error --pcapng capture list -
  expect_usage_error --nothing list client.log
}

TestAFileThatCannotBeReadEndsWith6() {
  run list missing.log
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-trace: cannot read missing.log" "No such file or directory"
  run list .
  expect_equal "$status" 6
}

TestBothEndsAreListedOnce() {
  make_logs
  run list client.log server.log
  expect_columns '1 stream 10.0.0.1:40000 10.0.0.2:8007 6 5 orderly'
  expect_equal "$(cat err)" ""
  run list server.log
  expect_columns '1 stream 10.0.0.1:40000 10.0.0.2:8007 6 5 orderly'
}

TestAListIsReadFromStandardInput() {
  make_logs
  run list - <client.log
  expect_columns '1 stream 10.0.0.1:40000 10.0.0.2:8007 6 5 orderly'
}

TestJsonHasOneObjectALine() {
  make_logs
  run --json list client.log server.log
  expect_equal "$status $(cat err)" "0 "
  expect_equal "$(cat out)" '{"number":1,"kind":"stream","start":"2026-11-22T13:01:00.000250Z","seconds":5.000000,'\
'"client":{"host":"10.0.0.1","port":40000},"server":{"host":"10.0.0.2","port":8007},"sent":6,"received":5,'\
'"sentTransfers":1,"receivedTransfers":1,"ended":"orderly","failures":0,"bothEnds":true,"uncertain":false}'
}

TestFiltersChooseConversations() {
  make_logs
  transfer 30 Sendto 3 "$sender" 616263 >sender.log
  local filter
  for filter in '--address 10.0.0.9' '--address vm' '--port 5300' '--from 2026-11-22T13:01:29' '--kind datagrams' \
    '--kind unknown,failed'; do
    # shellcheck disable=SC2086  # an option and its value
    run $filter list client.log server.log sender.log
    expect_columns '2 datagrams vm:? 10.0.0.9:5300 3 0 unknown'
  done
  for filter in '--address 10.0.0.2' '--port 40000' '--to 2026-11-22T13:01:29' '--kind stream' '--kind orderly'; do
    # shellcheck disable=SC2086
    run $filter list client.log server.log sender.log
    expect_columns '1 stream 10.0.0.1:40000 10.0.0.2:8007 6 5 orderly'
  done
}

TestNothingFoundEndsWith8() {
  make_logs
  run --port 1 list client.log
  expect_equal "$status $(cat out)" "8 "
  run show 2 client.log
  expect_equal "$status $(cat out)" "8 "
}

TestShowTellsTransfersInSequence() {
  make_logs
  run show 1 server.log client.log
  expect_equal "$status $(cat err)" "0 "
  expect_equal "$(sed 1,6d out)" '13:01:00.000250  +0.000000  connected
13:01:01.000250  +1.000000  client 6 bytes
    hello\n
13:01:03.000250  +2.000000  server 5 bytes
    a\x80\xFF\x00\n
13:01:04.000250  +1.000000  client closed
13:01:05.000250  +1.000000  server closed'
  run --hex show 1 client.log
  grep -qF '    00000000  61 80 FF 00 0A                                    a....' out || fail "$(cat out)"
}

TestTransfersWithoutDataAreToldAsSuch() {
  make_logs
  grep -v Verbose client.log >plain.log
  run show 1 plain.log
  expect_equal "$(grep -c 'the bytes are not recorded' out)" 2
  run show 1 plain.log server.log
  expect_equal "$(grep -c 'the bytes are not recorded' out || true)" 0
}

TestHostileLinesAreCountedAndShownHarmlessly() {
  make_logs
  {
    printf 'listening \e[31mred\xff\xc2\x9b\n\0\0\0\n'
    cat client.log
    say 40 "Packet Trace" "Sent 99999999999 bytes, $client"
    say 41 "Error" "VelNet::SocketImpl::Send() - FAIL. The ::send failed, errno = x"
    head -c 300000 /dev/zero | tr '\0' x
  } >hostile.log
  run list hostile.log
  expect_columns '1 stream 10.0.0.1:40000 10.0.0.2:8007 6 5 orderly'
  expect_match "$(cat err)" '^velsock-trace: 3 lines are not of this library'
  expect_match "$(cat err)" 'hostile.log, line 1: listening \\x1B\[31mred\\xFF\\xC2\\x9B'
  expect_match "$(cat err)" '1 line has no record that can be understood'
  expect_match "$(cat err)" '1 failure belongs to no conversation'
  expect_equal "$(tr -d '\n -~' <err | wc -c)" 0
  expect_equal "$(wc -c <err | awk '{ print $1 < 1000 }')" 1
}

TestAllFormsMayBeMixed() {
  local head='2026-11-22T13:01:0' name='Network/Packet Trace: ' text="Sent 1 bytes, $client"
  {
    echo "${head}1.000000Z $name$text"
    echo "${head}2.000000Z [5:6] $name$text"
    echo "time=${head}3.000000Z pid=5 tid=6 router=Network category=\"Packet Trace\" text=\"$text\""
    echo "{\"time\":\"${head}4.000000Z\",\"pid\":5,\"router\":\"Network\",\"category\":\"Packet Trace\",\"text\":\"$text\"}"
  } >mixed.log
  run list mixed.log
  expect_columns '1 stream 10.0.0.1:40000 10.0.0.2:8007 4 0 unknown'
}

# A log is rotated while it is followed, and then truncated.
TestFollowingSurvivesRotationAndTruncation() {
  make_logs
  head -n 3 client.log >app.log
  "$program" -f list app.log >followed 2>err &
  peer=$!
  sed -n '4,$p' client.log >>app.log
  await_lines 2
  mv app.log app.log.1
  sed 's/40000/40001/' client.log >app.log
  await_lines 3
  sed 's/40000/40002/' client.log | head -n 2 >app.log
  sleep 0.5
  sed 's/40000/40002/' client.log | sed 1,2d >>app.log
  await_lines 4
  expect_equal "$(sed 1d followed | awk '{ print $5, $7, $8 }' | xargs)" \
    "10.0.0.1:40000 6 5 10.0.0.1:40001 6 5 10.0.0.1:40002 6 5"
}

await_lines() {
  local attempt
  for attempt in {1..300}; do
    [ "$(wc -l <followed)" -lt "$1" ] || return 0
    sleep 0.1
  done
  fail "there are only these lines after $attempt attempts: $(cat followed)"
}

TestACaptureHasWhatBothEndsSent() {
  make_logs
  run --pcapng capture list client.log server.log
  expect_equal "$status $(cat out err)" "0 "
  expect_sound_capture
  expect_stream 0 68656c6c6f0a 6180ff000a
  expect_equal "$(analyse 'tcp.flags.syn == 1' ip.src tcp.srcport frame.time_epoch | tr '\t\n' '  ')" \
    "10.0.0.1 40000 1795352460.000250000 10.0.0.2 8007 1795352460.000250000 "
  expect_equal "$(analyse 'tcp.flags.fin == 1' ip.src frame.time_epoch | tr '\t\n' '  ')" \
    "10.0.0.1 1795352464.000250000 10.0.0.2 1795352465.000250000 "
}

# A text stream would have more bytes. Each block has its length as its second number.
TestACaptureIsMadeOfWholeBlocks() {
  make_logs
  run --pcapng capture list client.log server.log
  expect_equal "$status $(cat out err)" "0 "
  expect_equal "$(head -c 4 capture | od -An -tx1)" " 0a 0d 0d 0a"
  local place=0 size
  size=$(stat -c %s capture)
  while [ "$place" -lt "$size" ]; do
    place=$((place + $(od -An -tu4 -j $((place + 4)) -N 4 capture)))
  done
  expect_equal "$place" "$size"
}

TestACaptureOfIpv6IsSound() {
  make_logs
  sed "s/$client/$client6/" client.log >client6.log
  run --pcapng capture list client6.log
  expect_sound_capture
  expect_stream 0 68656c6c6f0a 6180ff000a
  expect_equal "$(analyse 'tcp.len > 0' ipv6.src | xargs)" "fd00::1 fd00::2"
}

TestACaptureOfDatagramsIsSound() {
  {
    transfer 01 Sendto 3 "$sender" 616263
    transfer 02 Sendto 0 "$sender" ''
    transfer 03 Recvfrom 2 'Local address: ::1 (5300), Remote address: fd00::7 (9)' 6465
  } >datagrams.log
  run --pcapng capture list datagrams.log
  expect_sound_capture
  expect_equal "$(analyse udp udp.length udp.dstport data.data | tr '\t\n' '  ')" "11 5300 616263 8 5300  10 5300 6465 "
  expect_match "$(analyse 'ip.dst == 10.0.0.9' frame.comment)" 'vm:\? is not known in full'
}

# The client's log lacks a line, and the server's another one.
TestACaptureFillsWhatOneLogHasLostFromTheOther() {
  make_logs
  grep -v 'Sent 6' client.log >lossy-client.log
  grep -v 'Sent 5' server.log >lossy-server.log
  run --pcapng capture list lossy-client.log lossy-server.log
  expect_sound_capture
  expect_stream 0 68656c6c6f0a 6180ff000a
}

TestACaptureOfALargeTransferIsSplit() {
  {
    say 00 "Connection Trace" "Connected, $client"
    say 01 "Verbose Packet Trace" "Sent 200000 bytes, $client, data: $(head -c 400000 /dev/zero | tr '\0' 4)"
    say 02 "Packet Trace" "Received 100000 bytes, $client"
  } >large.log
  run --pcapng capture list large.log
  expect_sound_capture
  expect_equal "$(analyse 'tcp.len > 0' tcp.len | xargs)" "61440 61440 61440 15680 61440 38560"
  expect_match "$(analyse 'tcp.srcport == 8007 && tcp.len > 0' frame.comment)" '100000 bytes are not recorded; zeros'
}

# It tells of 2 GB in a line.
TestACaptureDoesNotGrowWithWhatALineClaims() {
  say 01 "Packet Trace" "Sent 2147483647 bytes, $client" >large.log
  run --pcapng capture list large.log
  expect_equal "$status" 0
  [ "$(stat -c %s capture)" -lt 20000000 ] || fail "the capture has $(stat -c %s capture) bytes"
}

# What a browser makes of the page at this place in it.
browse() {
  command -v chromium >/dev/null || exit "$not_run"
  chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
    --disable-component-update --disable-sync --user-data-dir="$folder/profile" --virtual-time-budget=3000 --dump-dom \
    "file://$folder/page.html$1" >dom 2>browser.log || fail "$(tail -n 3 browser.log)"
  # What the page was made of is no part of what it shows.
  sed '/id="data">/,/^]}/d' dom >shown
}

TestThePageNeedsNothingElse() {
  make_logs
  say 06 Error 'VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: </script><b>x:1, errno = !' >>client.log
  run --html page.html list client.log server.log
  expect_equal "$status $(cat out err)" "0 "
  expect_equal "$(grep -c '</script>' page.html)" 2
  expect_equal "$(grep -ciE 'https?:|<link|src=|@import|url\(' page.html || true)" 0
}

TestThePageShowsConversationsAndBytes() {
  make_logs
  say 06 Error 'VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: </script><b>x:1, errno = !' >>client.log
  run --html page.html list client.log server.log
  browse '#c1t2'
  grep -q 'data-ready="yes"' shown || fail "the page's script has failed"
  grep -q '2 conversations, 2 transfers, 1 failure' shown || fail "$(cat shown)"
  grep -q '1: 10.0.0.1:40000 → 10.0.0.2:8007' shown || fail "$(cat shown)"
  grep -q '000000  61 80 ff 00 0a  *a\.\.\.\.' shown || fail "$(cat shown)"
  browse '#c2'
  grep -q '&lt;/script&gt;&lt;b&gt;x' shown || fail "$(cat shown)"
  expect_equal "$(grep -c '<b>' shown || true)" 0
}

# expect_traffic_captured OPTION: what velsock-cat sends through such sockets is what the capture has.
expect_traffic_captured() {
  local trace=(--trace 'connection,packet,verbose,error')
  head -c 100 /dev/urandom >question
  head -c 3000 /dev/urandom >answer
  launch "$velsock_cat" "$1" "${trace[@]}" --log-file server.log listen 0 <answer
  "$velsock_cat" "$1" "${trace[@]}" --log-file client.log -N connect "$host" "$port" <question >received 2>/dev/null
  await_peer
  expect_equal "$peer_status" 0
  run --pcapng capture list client.log server.log
  expect_sound_capture
  run --json list client.log server.log
  expect_equal "$(grep -c '"bothEnds":true' out) $(wc -l <out)" "1 1"
  # Which end the analyser names first depends on who was faster.
  tshark -r capture -q -z follow,tcp,raw,0 2>/dev/null | sed -n '7,$p' | grep -v = >followed
  local found
  found="$(grep -v $'^\t' followed | tr -d '\n') $(grep $'^\t' followed | tr -d '\t\n')"
  local sent answered
  sent=$(od -An -v -tx1 question | tr -d ' \n')
  answered=$(od -An -v -tx1 answer | tr -d ' \n')
  [ "$found" = "$sent $answered" ] || expect_equal "$found" "$answered $sent"
}

TestTrafficOfClassicSocketsIsJoinedAndCaptured() {
  expect_traffic_captured --classic
}

TestTrafficOfExtendedSocketsIsJoinedAndCaptured() {
  expect_traffic_captured -4
}

TestTrafficOverIpv6IsJoinedAndCaptured() {
  expect_traffic_captured -6
}

"${script_arguments[2]}"

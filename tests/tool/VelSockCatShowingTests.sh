#!/usr/bin/env bash
# What velsock-cat shows of what passes, and how fast it lets it pass.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

start_echo() {
  start --keep echo 0 </dev/null
}

# From now on, for a lower limit: a slow machine only makes it longer.
milliseconds() {
  echo $(($(date +%s%N) / 1000000))
}

TestADumpHasOffsetBytesAndCharacters() {
  start_echo
  run -N --hex connect "$host" "$port" < <(printf 'Hello, all of you!\n')
  expect_equal "$status $(cat err)" "0 "
  expect_equal "$(grep '^>' out)" '> 00000000  48 65 6C 6C 6F 2C 20 61  6C 6C 20 6F 66 20 79 6F  |Hello, all of yo|
> 00000010  75 21 0A                                          |u!.|'
  expect_equal "$(grep '^<' out | tr -d '<>')" "$(grep '^>' out | tr -d '<>')"
}

TestADumpControlsNoTerminal() {
  start_echo
  printf '%b' "$(printf '\\x%02x' {0..255})" >file
  run -N -x connect "$host" "$port" <file
  expect_equal "$status $(grep -c '^<' out)" "0 16"
  expect_equal "$(LC_ALL=C tr -d '\n -~' <out | wc -c)" 0
}

TestOffsetsGoOnFromOneTransferToTheNext() {
  start_echo
  run --hex --size 4 --rate 40 connect "$host" "$port" < <(printf 12345678) || true
  expect_equal "$status" 1
  run -N --hex --rate 40 connect "$host" "$port" < <(printf 12345678)
  expect_equal "$(grep '^>' out | cut -c 3-10 | xargs)" "00000000 00000004"
}

TestADumpOfDatagramsShowsBothDirections() {
  start -u --count 1 echo 0 </dev/null
  run --hex --answers 1 udp-send "$host" "$port" < <(printf ab)
  expect_equal "$(cut -c 1-18 out)" $'> 00000000  61 62 \n< 00000000  61 62 '
}

TestTheConnectionsOfAServerAreToldApart() {
  start --keep --hex echo 0 </dev/null
  run -N connect "$host" "$port" < <(printf a)
  run -N connect "$host" "$port" < <(printf b)
  expect_equal "$(cut -c 1-4 peer.out | xargs)" "#1 < #1 > #2 < #2 >"
}

TestTotalsAreShownOnRequest() {
  start_echo
  run -N --stats connect "$host" "$port" < <(printf text)
  expect_equal "$(cat out)" text
  expect_match "$(cat err)" '^sent 4 bytes, received 4 bytes in [0-9.]+ m?s \([0-9.]+ k?B/s\); connected in [0-9.]+ m?s; first byte after [0-9.]+ m?s$'
}

TestTotalsAreShownAfterAFailureToo() {
  start_echo
  run --stats --recv-timeout 100 --receive-only connect "$host" "$port" </dev/null
  expect_equal "$status $(wc -l <err)" "5 2"
  expect_match "$(head -n 1 err)" '^sent 0 bytes, received 0 bytes in '
}

json_time='"time":"[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{6}Z"'

TestEventsAreJsonOnRequest() {
  start_echo
  run -N --json connect "$host" "$port" < <(printf text)
  expect_equal "$status $(cat out) $(wc -l <err)" "0 text 2"
  expect_match "$(sed -n 1p err)" "^\{$json_time,\"event\":\"connected\",\"host\":\"$host\",\"port\":$port,\"address\":\"$host\"\}$"
  expect_match "$(sed -n 2p err)" "^\{$json_time,\"event\":\"ended\",\"sent\":4,\"received\":4,\"seconds\":[0-9.]+,\"bytesPerSecond\":[0-9.]+,\"secondsToConnect\":[0-9.]+,\"secondsToFirstByte\":[0-9.]+\}$"
}

TestAFailureIsAJsonEvent() {
  take_closed_port listen
  run -4 --json connect "$host" "$port" </dev/null
  expect_equal "$status $(wc -l <err)" "3 2"
  expect_match "$(tail -n 1 err)" "^\{$json_time,\"event\":\"failure\",\"exitCode\":3,\"text\":\"cannot connect to $host port $port: .*\",\"code\":10061,\"symbol\":\"SOCKET_ERR_CONNREFUSED\",\"details\":\[\"$host: Connection refused .*\",\"VelNet::.*\"\]\}$"
}

TestDatagramsAreJsonEvents() {
  rm -f says.pipe
  mkfifo says.pipe
  "$velsock_cat" -4 --json --from --count 1 udp-listen 0 >peer.out 2>says.pipe &
  peer=$!
  exec {says}<says.pipe
  read_said 55
  expect_match "$line" "^\{$json_time,\"event\":\"listening\",\"host\":\"127\.0\.0\.1\",\"port\":([0-9]+)\}$"
  run -4 udp-send 127.0.0.1 "${BASH_REMATCH[1]}" < <(printf 12345)
  await_peer
  expect_match "$(head -n 1 peer.err)" '"event":"datagram","bytes":5,"host":"127\.0\.0\.1","port":"[0-9]+"\}$'
}

TestARateIsNotExceeded() {
  start_echo
  local begin
  begin=$(milliseconds)
  run -N --rate 1K connect "$host" "$port" < <(head -c 1000 /dev/zero)
  expect_equal "$status $(stat -c %s out)" "0 1000"
  [ $(($(milliseconds) - begin)) -ge 850 ] || fail "1000 bytes passed in $(($(milliseconds) - begin)) ms"
}

# on_terminal COMMAND: its standard error is a terminal, and what it shows there goes to the file screen.
on_terminal() {
  script -q -e -c "$1" screen </dev/null >/dev/null
}

TestProgressIsShownOnATerminalAlone() {
  start --keep discard 0 </dev/null
  head -c 200000 /dev/zero >file
  on_terminal "'$velsock_cat' -N --rate 100K connect $host $port <file >out"
  expect_match "$(tr '\r' '\n' <screen)" '[0-9.]+ k?B, [0-9.]+ kB/s, 00:00:0[0-9] left'
  run -N --rate 100K connect "$host" "$port" <file
  expect_equal "$status $(cat out err)" "0 "
}

TestShortTransfersShowNoProgress() {
  start --keep discard 0 </dev/null
  on_terminal "'$velsock_cat' -N connect $host $port </dev/null >out"
  ! grep -q left screen || fail "progress was shown"
}

# The document's errors as they are explained, without what is Markdown.
# shellcheck disable=SC2016  # the quotes are Markdown's
from_document() {
  sed -nE '/^\| -?[0-9]+ \| `SOCKET_ERR_/ { s/\[([^]]*)\]\([^)]*\)/\1/g; s/`//g
    s/^\| (-?[0-9]+) \| ([A-Z0-9_]+) \| ([^|]*) \| ([^|]*) \| *([^|]*[^| ])? *\|$/\1 \2: \3\nCause: \4\nRemedy: \5/; s/\nRemedy: $//; p }' \
    "$(dirname "$script")/../../docs/errors.md"
}

TestEveryErrorIsExplainedAsTheDocumentDoes() {
  from_document >expected
  local first count=0
  while read -r first _; do
    if [[ $first =~ ^-?[0-9]+$ ]]; then
      "$velsock_cat" --explain -- "$first" >>explained
      count=$((count + 1))
    fi
  done <expected
  diff expected explained
  [ "$count" -gt 50 ] || fail "the document has $count errors"
}

TestAnErrorMayBeNamedInAnyWay() {
  run explain 10061
  cp out explained
  local name
  for name in SOCKET_ERR_CONNREFUSED connrefused $'\u274d'; do
    run --explain "$name"
    cmp explained out
  done
  run --json --explain=10061
  expect_match "$(cat out)" '^\{"code":10061,"symbol":"SOCKET_ERR_CONNREFUSED","text":"Connection refused","cause":"Nobody listens .*","remedy":"Start .*"\}$'
  for name in 10062x 4711 CONNREFUSE '' x; do
    expect_usage_error --explain "$name"
  done
}

"$test"

#!/usr/bin/env bash
# What velsock-cat takes on its command line.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

TestHelpGoesToStandardOutput() {
  run --help
  expect_equal "$status" 0
  expect_equal "$(stat -c %s err)" 0
  local word
  for word in connect listen udp-send udp-listen broadcast multicast relay echo discard chargen -z --explain --keep --hex --stats --json --rate '-4, -6' -N -q -w -v '1 wrong usage' '5 too late'; do
    grep -q -e "$word" out || fail "$word is not explained"
  done
}

TestHelpFitsAScreen() {
  run --help
  [ "$(wc -l <out)" -le 40 ] || fail "the help has $(wc -l <out) lines"
  expect_equal "$(grep -c '.\{81\}' out || true)" 0
}

TestHelpHasALetterOfItsOwn() {
  run -h
  expect_equal "$status" 0
  cp out letter
  run --help
  cmp letter out
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
  expect_usage_error udp-send 127.0.0.1 80 --count
}

TestAValueMayBeAttachedToItsOption() {
  run --trace=error --log-file=/none/log connect 127.0.0.1 1 </dev/null
  expect_equal "$status" 6
  expect_match "$(cat err)" '/none/log'
  expect_usage_error --recv-timeout= connect 127.0.0.1 80
  expect_usage_error --xt=yes connect 127.0.0.1 80
  expect_match "$(cat err)" "'--xt' takes no value"
  expect_usage_error connect 127.0.0.1 80 --help=all
}

TestLettersMayBeJoined() {
  expect_usage_error -46 connect 127.0.0.1 80
  expect_match "$(cat err)" "'-4' and '-6' exclude each other"
  expect_usage_error -4y connect 127.0.0.1 80
  expect_match "$(cat err)" "unknown option '-y'"
}

TestOptionsStandForCommands() {
  expect_usage_error -l -z 127.0.0.1 80
  expect_match "$(cat err)" 'only one command can be given'
  expect_usage_error -z 127.0.0.1
  expect_match "$(cat err)" 'ports takes HOST PORT\.\.\.'
  expect_usage_error --explain
  expect_match "$(cat err)" 'explain takes NUMBER\|SYMBOL'
}

TestPortsAreNumbersServicesAndRanges() {
  expect_usage_error -z 127.0.0.1 80-20
  expect_match "$(cat err)" "'80-20' ends before it begins"
  expect_usage_error -z 127.0.0.1 0-20
  expect_usage_error -z 127.0.0.1 20-65536
  expect_usage_error -z 127.0.0.1 20,,30
  expect_usage_error -z 127.0.0.1 20-
  expect_usage_error -z '' 20
}

TestARelayTakesTwoEnds() {
  expect_usage_error relay 7000 127.0.0.1
  expect_usage_error relay 127.0.0.1 7000 127.0.0.1 80 81
  expect_usage_error relay 7000 127.0.0.1 0
  expect_usage_error relay 7000 '' 80
  expect_usage_error --classic relay 7000 127.0.0.1 80
  expect_match "$(cat err)" 'relay needs an extended socket'
  expect_usage_error --recv-timeout 5 relay 7000 127.0.0.1 80
}

TestServersTakeTheirOptions() {
  expect_usage_error -u --keep echo 7000
  expect_usage_error -u --accept-timeout 5 discard 7000
  expect_usage_error --count 5 chargen 7000
  expect_usage_error --classic -u echo 7000
  expect_usage_error --keep -N listen 7000
  expect_usage_error --keep connect 127.0.0.1 7000
  expect_usage_error -u listen 7000
}

TestARateIsANumberOfBytes() {
  expect_usage_error --rate 0 connect 127.0.0.1 80
  expect_usage_error --rate 5T connect 127.0.0.1 80
  expect_usage_error --rate K connect 127.0.0.1 80
  expect_usage_error --rate 5G connect 127.0.0.1 80
  expect_usage_error --rate 5 udp-listen 80
}

TestALetterStandsForListen() {
  expect_usage_error -l 127.0.0.1 80 81
  expect_match "$(cat err)" 'listen takes \[HOST\] PORT'
  run -l 192.0.2.1 80 </dev/null
  expect_equal "$status" 3
}

TestAMissingOrSurplusOperandIsWrongUsage() {
  local command
  for command in listen udp-listen; do
    expect_usage_error "$command"
    expect_usage_error "$command" 127.0.0.1 80 81
  done
  for command in connect udp-send multicast; do
    expect_usage_error "$command" 80
    expect_usage_error "$command" 127.0.0.1 80 81
  done
  expect_usage_error broadcast
  expect_usage_error broadcast 127.0.0.1 80
}

TestAPortThatIsNoPortIsWrongUsage() {
  local text
  for text in 80x x80 '' ' 80' '80 ' +80 0x50 8.0 70000 65536 4294967376 99999999999999999999 $'80\n'; do
    expect_usage_error connect 127.0.0.1 "$text"
    expect_usage_error listen "$text"
    expect_usage_error udp-send 127.0.0.1 "$text"
    expect_usage_error broadcast "$text"
  done
  expect_usage_error listen -- -1
}

TestNobodyCanSendToPort0() {
  local family
  for family in --classic --xt; do
    expect_usage_error "$family" connect 127.0.0.1 0
    expect_usage_error "$family" udp-send 127.0.0.1 0
  done
  expect_usage_error broadcast 0
  expect_usage_error multicast 239.1.2.3 0
}

TestANumberThatIsNoneIsWrongUsage() {
  local text
  for text in 1s -1 '' 1.5 4294967296; do
    expect_usage_error --recv-timeout "$text" connect 127.0.0.1 80
    expect_usage_error --send-timeout "$text" connect 127.0.0.1 80
    expect_usage_error --count "$text" udp-send 127.0.0.1 80
    expect_usage_error --size "$text" udp-send 127.0.0.1 80
  done
  expect_usage_error --size 65536 udp-send 127.0.0.1 80
}

TestSecondsThatAreNoneAreWrongUsage() {
  local text
  for text in 1s -2 '' . 1. .5 0.0001 1.2.3 4294967; do
    expect_usage_error -q "$text" connect 127.0.0.1 80
    expect_usage_error -w "$text" connect 127.0.0.1 80
  done
  expect_usage_error -w -1 connect 127.0.0.1 80
}

TestATraceListWithAnUnknownOrEmptyItemIsWrongUsage() {
  local list
  for list in everything 'connection,' ',packet' 'connection,,packet' Packet ''; do
    expect_usage_error --trace "$list" connect 127.0.0.1 80
  done
}

TestContradictionsAreWrongUsage() {
  expect_usage_error --send-only --receive-only connect 127.0.0.1 80
  expect_usage_error --classic --xt connect 127.0.0.1 80
  expect_usage_error -4 -6 connect 127.0.0.1 80
  expect_usage_error --classic -6 connect 127.0.0.1 80
}

TestAnOptionOfAnotherCommandIsWrongUsage() {
  local option
  for option in '--from' '--size 5' '--count 5' '--answers 1' '-w 1' '--connect-timeout 1'; do
    # shellcheck disable=SC2086  # an option and its value
    expect_usage_error $option listen 80
    expect_match "$(cat err)" "'${option% *}' does not go with listen"
  done
  for option in --send-only --receive-only; do
    expect_usage_error "$option" udp-send 127.0.0.1 80
    expect_usage_error "$option" udp-listen 80
  done
  for option in -N '-q 1' '--accept-timeout 5'; do
    # shellcheck disable=SC2086  # an option and its value
    expect_usage_error $option udp-send 127.0.0.1 80
  done
  expect_usage_error --accept-timeout 5 connect 127.0.0.1 80
  expect_usage_error --answers 1 udp-listen 80
  expect_usage_error --reuse connect 127.0.0.1 80
  expect_usage_error --size 5 udp-listen 80
  expect_usage_error --send-timeout 5 multicast 239.1.2.3 80
}

TestWhatOnlyExtendedSocketsCanDoIsWrongUsageOfClassicOnes() {
  expect_usage_error --classic broadcast 80
  expect_usage_error --classic multicast 239.1.2.3 80
  expect_usage_error --classic --from udp-listen 80
}

TestEmptyDatagramsWithoutACountAreWrongUsage() { expect_usage_error --size 0 udp-send 127.0.0.1 80; }

TestWhatConcernsAnswersNeedsAnswers() {
  expect_usage_error --recv-timeout 5 broadcast 80
  expect_match "$(cat err)" "'--recv-timeout' needs '--answers'"
  expect_usage_error --from udp-send 127.0.0.1 80
}

TestTheEndOfAnInputThatIsNotReadIsWrongUsage() {
  expect_usage_error --receive-only -N connect 127.0.0.1 80
  expect_usage_error --receive-only -q 1 connect 127.0.0.1 80
}

TestALogFileWithoutTraceIsWrongUsage() { expect_usage_error --log-file log connect 127.0.0.1 80; }

TestALogTextThatCannotBeFollowedIsWrongUsage() {
  expect_usage_error --log Network/Nothing=on connect 127.0.0.1 80
  expect_match "$(cat err)" 'log configuration "Network/Nothing=on", character '
  expect_usage_error --log stderr --trace error connect 127.0.0.1 80
}

TestAnEmptyHostIsWrongUsage() {
  expect_usage_error connect '' 80
  expect_usage_error listen '' 80
  expect_usage_error multicast '' 80
}

"$test"

#!/usr/bin/env bash
# velsock-resolve seen from outside: what it writes and what it ends with.
#
#   VelSockResolveTests.sh VELSOCK_RESOLVE REGISTRY_ROOT TEST
set -euo pipefail

script=$(realpath "${BASH_SOURCE[0]}")
program=$(realpath "$1")
registry_root=$2
script_arguments=("$program" "$2" "$3")
# shellcheck source=Tool.sh
source "$(dirname "$script")/Tool.sh"

# expect_answer OUTPUT WORD...: all is answered, in these words and in silence.
expect_answer() {
  local output=$1
  shift
  run "$@" </dev/null
  expect_equal "$status $(cat err)" "0 "
  expect_equal "$(without_time <out)" "$output"
}

# How long an answer has taken is different each time.
without_time() {
  sed -E 's/,"seconds":[0-9]+\.[0-9]+\}$/}/'
}

use_known_hosts() {
  enter_own_network '10.1.2.3 velsock-host' '127.0.0.1 localhost' \
    '10.0.0.1 many' '10.0.0.2 many' '10.0.0.9 named.example alias'
}

# The line feed tells a read of the program's output from its end.
ask() {
  echo "$1" >&"$questions"
  read -r answer <&"$answers"
}

start_session() {
  mkfifo questions.pipe answers.pipe
  "$program" "$@" <questions.pipe >answers.pipe &
  peer=$!
  exec {questions}>questions.pipe {answers}<answers.pipe
}

TestHelpGoesToStandardOutput() {
  run --help
  expect_equal "$status $(cat err)" "0 "
  local word
  for word in forward reverse dotted local-name local-domain name-servers ip-version; do
    grep -q " $word " out || fail "$word is not explained"
  done
  for word in 0 1 2 3 6 7; do
    grep -q "^  $word  " out || fail "exit code $word is not explained"
  done
}

TestVersionGoesToStandardOutput() {
  run --version
  expect_equal "$status" 0
  expect_match "$(cat out)" '^velsock-resolve [0-9]+\.[0-9]+\.[0-9]+$'
}

TestWrongUsageEndsWith1() {
  expect_usage_error
  expect_usage_error backward
  expect_usage_error --loud forward localhost
  expect_usage_error local-name x
  expect_usage_error ip-version x
  expect_usage_error --cache dotted 1.2.3.4
  expect_usage_error --cache local-name
  expect_usage_error -6 reverse 127.0.0.1
  expect_usage_error -4 -6 forward localhost
  expect_usage_error -6 --cache forward localhost
  expect_usage_error --json=yes forward localhost
}

TestForwardGivesAllAddressesInTheirOrder() {
  use_known_hosts
  expect_answer $'10.0.0.1\n10.0.0.2' forward many
  expect_answer $'10.0.0.9' forward alias
  expect_answer $'10.0.0.9\n10.1.2.3' --short forward named.example velsock-host
}

TestForwardGivesTheAddressesOfTheChosenVersion() {
  enter_own_network '10.1.2.3 velsock-host' '127.0.0.1 localhost' '::1 localhost' 'fd77::1 many' 'fd77::2 many' \
    '10.0.0.1 many' '10.0.0.9 four'
  expect_answer $'fd77::1\nfd77::2' -6 forward many
  expect_answer 10.0.0.1 -4 forward many
  expect_answer '{"query":"::1","addresses":["::1"]}' --json -6 forward ::1
  run --short -6 forward four many
  expect_equal "$status $(xargs <out)" "2 fd77::1 fd77::2"
  expect_match "$(cat err)" '^velsock-resolve: cannot resolve four: .* \(11004 SOCKET_ERR_NO_DATA\)$'
  run --ipv6 forward name.invalid
  expect_equal "$status" 2
  expect_match "$(cat err)" '^velsock-resolve: cannot resolve name.invalid: .* \(110[0-9][0-9] SOCKET_ERR_[A-Z_]+\)$'
}

TestForwardThroughTheCacheGivesTheFirstAddress() {
  use_known_hosts
  expect_answer 10.0.0.1 --cache forward many
  expect_answer $'10.0.0.1\n10.0.0.1' --short --cache forward many many
}

TestReverseGivesTheName() {
  use_known_hosts
  expect_answer named.example reverse 10.0.0.9
  expect_answer $'named.example\nlocalhost' --short --cache reverse 10.0.0.9 127.0.0.1
}

TestDottedTakesWhatTheSystemTakes() {
  expect_answer $'1.2.3.4\n0.0.0.1\n1.0.0.2\n255.0.0.8' --short dotted 1.2.3.4 1 1.2 0xff.010
  expect_answer 1.2.3.4 dotted '1.2.3.4 and more'
}

TestOperandsMayLookLikeOptions() {
  run dotted -- --json
  expect_equal "$status" 2
}

TestTheLocalNameIsThisComputers() {
  expect_answer "$(uname -n)" local-name
}

TestWithoutADomainTheNameStandsInForIt() {
  use_known_hosts
  : >resolv.conf
  mount --bind resolv.conf /etc/resolv.conf
  expect_answer velsock-host local-domain
}

TestDomainAndNameServersAreTheSystems() {
  use_known_hosts
  printf '%s\n' 'search example.org' 'nameserver 10.0.0.3' 'nameserver 10.0.0.4' >resolv.conf
  mount --bind resolv.conf /etc/resolv.conf
  expect_answer example.org local-domain
  expect_answer $'10.0.0.3\n10.0.0.4' name-servers
  expect_answer '{"nameServers":["10.0.0.3","10.0.0.4"]}' --json name-servers
  expect_answer '{"domain":"example.org"}' --json local-domain
}

TestWithoutNameServersItEndsWith7() {
  use_known_hosts
  echo 'nameserver fd77::1' >resolv.conf
  mount --bind resolv.conf /etc/resolv.conf
  run name-servers
  expect_equal "$status $(cat out)" "7 "
  expect_match "$(cat err)" '^velsock-resolve: no answer to name-servers: VelNet::SocketAddress::GetLocalMachineDomainNameServer\(\) - FAIL\. '
  run --json name-servers
  expect_equal "$status" 7
  expect_match "$(cat out)" '^\{"error":"VelNet::SocketAddress::GetLocalMachineDomainNameServer\(\) - FAIL\. .*","code":-1,"symbol":"SOCKET_ERR_UNKNOWN","seconds":[0-9.]+\}$'
}

# An empty folder in place of the one that holds the settings, or of the first above it that exists.
hide_settings() {
  local existing=$registry_root
  while [ ! -d "$existing" ]; do existing=$(dirname "$existing"); done
  [ "$existing" != / ] || exit "$not_run"
  mount -t tmpfs settings "$existing"
}

TestTheIpVersionIs4UnlessTheSettingsSay6() {
  use_known_hosts
  hide_settings
  expect_answer 4 ip-version
  local key="$registry_root/HKLM/SOFTWARE/Corvane/Orrin Server"
  mkdir -p "$key"
  echo 6 >"$key/IPVersion"
  expect_answer 6 ip-version
  expect_answer '{"ipVersion":6}' --json ip-version
}

TestWhatDoesNotResolveEndsWith2AndDoesNotKeepTheRest() {
  use_known_hosts
  run --short forward name.invalid localhost 256.1.1.1 many
  expect_equal "$status" 2
  expect_equal "$(cat out)" $'127.0.0.1\n10.0.0.1\n10.0.0.2'
  expect_equal "$(wc -l <err)" 2
  expect_match "$(head -n 1 err)" '^velsock-resolve: cannot resolve name.invalid: .* \(110[0-9][0-9] SOCKET_ERR_[A-Z_]+\)$'
  run reverse 10.9.9.9
  expect_equal "$status" 2
  run dotted 1.2.3.
  expect_equal "$status" 2
  expect_equal "$(wc -l <err)" 1
}

TestTheLibrarysTextIsShownOnRequest() {
  run -v forward 256.1.1.1
  expect_equal "$status" 2
  expect_equal "$(wc -l <err)" 2
  expect_match "$(tail -n 1 err)" '^  VelNet::SocketAddress::GetOctetsFromMachineName\(\) - FAIL\.'
}

TestEachAnswerIsAJsonObjectOfItsOwn() {
  use_known_hosts
  expect_answer '{"query":"many","addresses":["10.0.0.1","10.0.0.2"]}
{"query":"localhost","addresses":["127.0.0.1"]}' --json forward many localhost
  expect_answer '{"query":"10.0.0.9","name":"named.example"}' --json reverse 10.0.0.9
  expect_answer '{"query":"1.2","address":"1.0.0.2"}' --json dotted 1.2
  expect_answer '{"name":"velsock-host"}' --json local-name
}

TestAFailureIsAJsonObjectToo() {
  run --json dotted nonsense
  expect_equal "$status" 2
  expect_match "$(cat out)" '^\{"query":"nonsense","error":"VelNet::SocketAddress::ConvertDotted.*","code":-1,"symbol":"SOCKET_ERR_UNKNOWN","seconds":[0-9.]+\}$'
}

# expect_query JSON TEXT: how a question's text is shown.
expect_query() {
  expect_equal "$("$program" --json dotted -- "$2" | without_time)" "{\"query\":$1,\"address\":\"0.0.0.1\"}"
}

TestWhatMustNotStandInJsonIsEscaped() {
  # shellcheck disable=SC1003  # a text may end in a backslash
  expect_query '"1 \"\\\"\\"' '1 "\"\'
  expect_query '"1 \u000A\u0009\u001B[31m\u007F/"' $'1 \n\t\e[31m\x7f/'
  expect_query '"1 é€😀"' '1 é€😀'
}

TestWhatIsNoUtf8IsReplacedInJson() {
  # The shell writes a code point as the locale has it.
  local replacement=$'\xef\xbf\xbd'
  expect_query "\"1 a${replacement}b\"" $'1 a\xffb'
  expect_query "\"1 $replacement\"" $'1 \xe2\x82'
  expect_query "\"1 $replacement$replacement$replacement\"" $'1 \xed\xa0\x80'
}

TestQuestionsAreReadFromStandardInput() {
  use_known_hosts
  run forward < <(printf 'localhost\nalias\r\nvelsock-host\0alias')
  expect_equal "$status $(cat err)" "0 "
  expect_equal "$(cat out)" $'127.0.0.1\tlocalhost\n10.0.0.9\talias\n10.1.2.3\tvelsock-host\n10.0.0.9\talias'
  run dotted </dev/null
  expect_equal "$status $(cat out)$(cat err)" "0 "
}

TestWithoutTheCacheEachQuestionIsAskedAnew() {
  use_known_hosts
  start_session --short forward
  ask alias
  expect_equal "$answer" 10.0.0.9
  echo '10.0.0.8 alias' >hosts
  ask alias
  expect_equal "$answer" 10.0.0.8
}

TestTheCacheRemembersItsAnswers() {
  use_known_hosts
  start_session --short --cache forward
  ask alias
  expect_equal "$answer" 10.0.0.9
  echo '10.0.0.8 alias newcomer' >hosts
  ask alias
  expect_equal "$answer" 10.0.0.9
  ask newcomer
  expect_equal "$answer" 10.0.0.8
}

TestTheCacheDoesNotRememberFailures() {
  use_known_hosts
  start_session --json --cache forward 2>/dev/null
  ask newcomer
  expect_match "$answer" '"error"'
  echo '10.0.0.8 newcomer' >hosts
  ask newcomer
  expect_match "$answer" '^\{"query":"newcomer","addresses":\["10\.0\.0\.8"\],"seconds":[0-9.]+\}$'
}

TestTheCacheRemembersNamesOfAddresses() {
  use_known_hosts
  start_session --short --cache reverse
  ask 10.0.0.9
  expect_equal "$answer" named.example
  echo '10.0.0.9 renamed' >hosts
  ask 10.0.0.9
  expect_equal "$answer" named.example
}

TestAFullOutputEndsWith6() {
  status=0
  "$program" dotted 1.2.3.4 >/dev/full 2>err || status=$?
  read_messages err
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-resolve: Cannot write standard output" "No space left on device"
}

TestAnUnreadableInputEndsWith6() {
  run dotted <"$folder"
  expect_equal "$status" 6
  expect_reason "$(cat err)" "velsock-resolve: Cannot read standard input" "Is a directory"
}

TestOfSeveralQuestionsEachAnswerTellsItsOwn() {
  use_known_hosts
  expect_answer $'10.0.0.1\tmany\n10.0.0.2\tmany\n10.0.0.9\talias' forward many alias
  expect_answer $'10.0.0.1\n10.0.0.2\n10.0.0.9' --short forward many alias
  expect_answer $'10.0.0.1\n10.0.0.2' forward many
}

TestAnEmptyLineIsAnEmptyQuestion() {
  use_known_hosts
  run forward < <(printf 'alias\n\nalias\n')
  expect_equal "$status $(cat err)" "0 "
  expect_equal "$(cat out)" $'10.0.0.9\talias\n10.1.2.3\t(empty)\n10.0.0.9\talias'
  run reverse < <(echo)
  expect_equal "$status $(cat out)" "2 "
  expect_match "$(cat err)" '^velsock-resolve: cannot resolve the empty question: '
}

TestReverseTakesIpv6Addresses() {
  enter_own_network '10.1.2.3 velsock-host' '127.0.0.1 localhost' 'fd77::9 named.example'
  expect_answer named.example reverse fd77::9
  run reverse fd77::8
  expect_equal "$status" 2
  expect_match "$(cat err)" '^velsock-resolve: cannot resolve fd77::8: Valid name, no data record of requested type \(11004 SOCKET_ERR_NO_DATA\)$'
}

TestAJsonFailureHasSymbolAndTime() {
  use_known_hosts
  run --json forward name.invalid
  expect_equal "$status" 2
  expect_match "$(cat out)" '^\{"query":"name.invalid","error":"VelNet::.*","code":11001,"symbol":"SOCKET_ERR_HOST_NOT_FOUND","seconds":[0-9]+\.[0-9]+\}$'
}

# expect_finding LINE [REMEDY]: what the doctor says, as patterns.
expect_finding() {
  grep -qE -A 1 "^$1\$" out || fail "no line '$1' in: $(cat out)"
  [ $# = 1 ] || expect_match "$(grep -E -A 1 "^$1\$" out | tail -n 1)" "^       To mend it: $2\$"
}

TestTheDoctorFindsNothingToFailOnAWholeComputer() {
  use_known_hosts
  lay_wire
  ip_command address add 10.1.2.3/24 dev wire
  ip_command route add default dev wire
  ip_command -6 address add fd77::1/64 dev wire nodad
  printf '%s\n' 'search example.org' 'nameserver 10.0.0.3' >resolv.conf
  mount --bind resolv.conf /etc/resolv.conf
  run doctor
  expect_equal "$status $(grep -c FAILS out)" "0 0"
  expect_finding 'ok     name: velsock-host, with the addresses 10\.1\.2\.3'
  expect_finding 'ok     ip-version: extended sockets speak IPv4: the first address of velsock-host is 10\.1\.2\.3'
  expect_finding 'ok     localhost: 127\.0\.0\.1 \(loopback\)'
  expect_finding 'ok     name-servers: 10\.0\.0\.3, read from /etc/resolv\.conf'
  expect_finding 'ok     domain: example\.org, read from /etc/resolv\.conf'
  expect_finding "ok     settings: $registry_root.*"
  expect_finding 'ok     IPv4 broadcast: datagrams leave from 10\.1\.2\.3'
  expect_finding 'ok     IPv4 multicast: groups can be joined, and datagrams leave from 10\.1\.2\.3'
  expect_finding 'ok     IPv6 multicast: groups can be joined, and datagrams leave from fd77::1'
}

TestTheDoctorTellsWhatWouldFailAndWhatMendsIt() {
  enter_own_network '10.9.9.9 velsock-host'
  : >resolv.conf
  mount --bind resolv.conf /etc/resolv.conf
  run doctor
  expect_equal "$status $(cat err)" "7 "
  expect_finding 'FAILS  name: velsock-host, with the addresses 10\.9\.9\.9 \(of no interface here\)' \
    'add a line .* velsock-host to the hosts file .*'
  expect_finding 'FAILS  name-servers: there is none of IPv4 in /etc/resolv\.conf' 'name a server .*'
  expect_finding 'FAILS  IPv4 broadcast: Network is unreachable \(10051 SOCKET_ERR_NETUNREACH\)' 'bring an interface up .*'
  expect_finding 'FAILS  IPv4 multicast: .* \(10049 SOCKET_ERR_ADDRNOTAVAIL\)' 'bring an interface up .*'
}

TestTheDoctorNamesSettingsAndWhereTheyAre() {
  use_known_hosts
  hide_settings
  local parameters="$registry_root/HKLM/system/CurrentControlSet/Services/Tcpip/Parameters"
  mkdir -p "$parameters/Interfaces/Wire"
  echo 10.0.0.7 >"$parameters/Interfaces/Wire/NameServer"
  run doctor
  expect_finding "ok     name-servers: 10\.0\.0\.7, read from the settings tree, $parameters"
  expect_finding "ok     settings: $registry_root; HKLM/system/CurrentControlSet/Services/Tcpip/Parameters/Interfaces/Wire/NameServer: 10\.0\.0\.7"
}

TestATextSaysWhatIsLoggedAndWhere() {
  use_known_hosts
  run --log 'Network/Error=on, file:log' forward no-such-host.invalid
  expect_equal "$status" 2
  expect_match "$(cat log)" ' Network/Error: '
  expect_usage_error --log nowhere forward localhost
}

TestTheDoctorAnswersInJson() {
  use_known_hosts
  run --json doctor
  expect_match "$(sed -n 1p out)" '^\{"topic":"name","works":(true|false),"text":"velsock-host, .*","remedy":".*"\}$'
  expect_equal "$(grep -vcE '^\{"topic":"[^"]+","works":(true|false),"text":"[^"]+","remedy":"[^"]*"\}$' out || true)" 0
  expect_usage_error doctor now
  expect_usage_error -4 doctor
  expect_usage_error --short doctor
  expect_usage_error --short local-name
}

"$3"

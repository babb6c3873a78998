# shellcheck shell=bash disable=SC2154  # Network.sh and Agents.sh have the hosts
# How names become addresses, and which of them a socket takes.

serve_dual_name() {
  with_names alpha "--host-record=dual.test,${ipv4[beta]},${ipv6[beta]}"
}

connected_record() { # HOST TARGET
  echo "Connection Trace: Connected, Local address: $1 (0), Remote address: ${2% *} (${2#* })"
}

TestAHostWithIpv6ReachesANameOfBothFamiliesOverIpv6() {
  add_host alpha
  add_host beta
  serve_dual_name
  listen_on beta server ipv6 7000
  expect alpha "create client stream" "ok ipv6"
  expect alpha "connect client dual.test 7000" ok
  ask beta "accept server peer"
  [[ $answer = "ok ${ipv6[alpha]} "* ]] || fail "$answer"
  expect alpha "send client question" "ok 8"
  expect beta "receive peer" "ok question"
}

TestAHostWithoutIpv6ReachesANameOfBothFamiliesOverIpv4() {
  add_host alpha without-ipv6
  add_host beta
  serve_dual_name
  listen_on beta server ipv4 7000
  expect alpha "create client stream" "ok ipv4"
  expect alpha "connect client dual.test 7000" ok
  ask beta "accept server peer"
  [[ $answer = "ok ${ipv4[alpha]} "* ]] || fail "$answer"
  expect beta "send peer answer" "ok 6"
  expect alpha "receive client" "ok answer"
}

TestAHostWithoutIpv4ReachesANameOfBothFamiliesOverIpv6() {
  add_host alpha
  add_host beta
  serve_dual_name
  in_host alpha ip address delete "${ipv4[alpha]}/24" dev eth0
  use_names alpha "nameserver ${ipv6[names]}" "options timeout:1 attempts:1"
  listen_on beta server ipv6 7000
  expect alpha "create client stream" "ok ipv6"
  expect alpha "connect client dual.test 7000" ok
  expect alpha "resolve dual.test" "ok ${ipv4[beta]}"
  expect alpha "resolve alpha" "ok 127.0.0.1"
}

TestConnectPassesOverAddressesOfTheOtherFamily() {
  add_host alpha
  add_host beta
  serve_dual_name
  expect_first_address alpha dual.test "${ipv6[beta]}"
  listen_on beta server ipv4 7000
  make_socket alpha client stream ipv4
  expect alpha "connect client dual.test 7000" ok
  ask beta "accept server peer"
  [[ $answer = "ok ${ipv4[alpha]} "* ]] || fail "$answer"
}

TestADatagramPassesOverAddressesOfTheOtherFamily() {
  add_host alpha
  add_host beta
  serve_dual_name
  expect_first_address alpha dual.test "${ipv6[beta]}"
  bound_socket beta receiver datagram ipv4 7000
  bound_socket alpha sender datagram ipv4 7001
  expect alpha "send-to sender dual.test 7000 question" "ok 8"
  expect beta "receive-from receiver" "ok question ${ipv4[alpha]} 7001"
  expect_records alpha "Packet Trace: Sendto 8 bytes, Local address: alpha (Random Port),\
 Remote address: dual.test (7000)"
}

# The system's own resolver shows that there is an order to keep: HOST NAME ADDRESS
expect_first_address() {
  local first
  first=$(in_host "$1" getent ahosts "$2" | sed -n '1s/ .*//p')
  [ "$first" = "$3" ] || fail "$1 finds $first first for $2"
}

TestASocketOfIpv6HasNoUseForANameOfIpv4() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=four.test,${ipv4[beta]}"
  make_socket alpha client stream ipv6
  expect alpha "connect client four.test 7000" "$(connect_failed alpha four.test:7000 10014)"
}

TestConnectGoesOnToTheNextAddressWhenTheFirstRefuses() {
  add_host alpha
  add_host beta
  add_address beta 192.0.2.102/24
  with_names alpha "--host-record=pair.test,${ipv4[beta]}" --host-record=pair.test,192.0.2.102
  ask alpha "resolve pair.test"
  local last=${answer##* }
  make_socket beta server stream ipv4
  expect beta "bind server $last 7000" ok
  expect beta "listen server" ok

  make_socket alpha client stream ipv4
  expect alpha "connect client pair.test 7000" ok
  ask beta "accept server peer"
  expect_records alpha "$(connected_record alpha "pair.test 7000")"
  expect alpha "send client question" "ok 8"
  expect beta "receive peer" "ok question"
  expect_records alpha \
    "Packet Trace: Sent 8 bytes, Local address: alpha (0), Remote address: pair.test (7000)"
  [[ $(in_host alpha ss -Htn dport = :7000) = *"$last:7000"* ]] || fail "not connected to $last"
}

# The resolver puts last what it finds no route to.
TestConnectTellsTheFailureOfTheLastAddress() {
  add_host alpha
  add_host beta
  with_names alpha --host-record=pair.test,203.0.113.1 "--host-record=pair.test,${ipv4[beta]}"
  make_socket alpha client stream ipv4
  local failure
  failure=$(connect_failed alpha pair.test:7000 10051)
  expect alpha "connect client pair.test 7000" "$failure"
  expect_records alpha "Error: ${failure#failed 10051 }"
}

TestTheOwnNameThatIsNowhereStandsForTheOwnAddresses() {
  add_host alpha
  add_host beta
  listen_on beta server ipv6 7000
  expect alpha "create client stream" "ok ipv6"
  expect alpha "connect client ${ipv6[beta]} 7000" ok
  expect alpha "resolve alpha" "ok ${ipv4[alpha]}"
  expect alpha "resolve ALPHA" "ok ${ipv4[alpha]}"
  in_host alpha hostname alpha.example.test
  expect alpha "resolve alpha" "ok ${ipv4[alpha]}"
  expect alpha "create server stream" "ok ipv6"
  expect alpha "bind server [this-machine] 7000" ok
}

TestTheOwnNameThatIsLoopbackInTheHostsFileStandsForTheOwnAddresses() {
  add_host alpha
  add_host beta
  know_names alpha '127.0.1.1 alpha.example.test alpha'
  expect alpha "resolve alpha" "ok ${ipv4[alpha]}"
  expect alpha "create server stream" "ok ipv6"
  expect alpha "bind server [this-machine] 7000" ok
  expect alpha "listen server" ok
  make_socket beta client stream ipv6
  expect beta "connect client ${ipv6[alpha]} 7000" ok
  ask alpha "accept server peer"
  [[ $answer = "ok ${ipv6[beta]} "* ]] || fail "$answer"
}

TestTheOwnNameThatIsLoopbackEverywhereStaysSo() {
  add_host alpha
  know_names alpha '127.0.1.1 alpha'
  in_host alpha ip link set eth0 down
  expect alpha "resolve alpha" "ok 127.0.1.1"
  expect alpha "create server stream" "ok ipv4"
  expect alpha "bind server [this-machine] 7000" ok
}

TestTheOwnNameOfAHostWithoutIpv6StandsForItsIpv4Address() {
  add_host alpha without-ipv6
  expect alpha "create client stream" "ok ipv4"
  expect alpha "create server datagram" "ok ipv4"
  expect alpha "bind server [this-machine] 7000" ok
}

TestAHostWithoutANetworkHasItsLoopback() {
  add_host alpha
  in_host alpha ip link set eth0 down
  expect alpha "create server stream" "ok ipv6"
  expect alpha "bind server [this-machine] 7000" ok
  expect alpha "listen server" ok
  expect alpha "create client stream" "ok ipv6"
  expect alpha "connect client [loopback] 7000" ok
}

TestAHostWithoutAnyInterfaceStillMakesSockets() {
  add_host alpha
  in_host alpha ip link delete eth0
  in_host alpha ip link set lo down
  use_names alpha "options timeout:1 attempts:1"
  expect alpha "create client stream" "ok ipv4"
  expect alpha "resolve alpha" "ok 127.0.0.1"
}

TestTheFirstAddressOfTheOwnNameDecidesTheFamily() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=alpha.test,${ipv4[alpha]},${ipv6[alpha]}"
  in_host alpha hostname alpha.test
  expect alpha "create client stream" "ok ipv6"
  echo 'precedence ::ffff:0:0/96 100' >"$world/alpha/gai.conf"
  # The order is settled when a process asks for the first time.
  dismiss_agents
  expect alpha "create client stream" "ok ipv4"
}

# All of them are beta's, and somebody listens on the last one only.
TestANameOfThirtyFiveAddressesHasThemAll() {
  add_host alpha
  add_host beta
  in_host beta ip route add local 192.0.2.192/26 dev lo
  local addresses
  addresses=$(echo 192.0.2.{201..235})
  # shellcheck disable=SC2046,SC2086  # an option for each address
  with_names alpha $(printf -- '--host-record=many.test,%s\n' $addresses)
  expect alpha "resolve many.test" "ok $addresses"

  make_socket beta server stream ipv4
  expect beta "bind server 192.0.2.235 7000" ok
  expect beta "listen server" ok
  make_socket alpha client stream ipv4
  expect alpha "connect client many.test 7000" ok
  ask beta "accept server peer"
  expect alpha "send client question" "ok 8"
  expect beta "receive peer" "ok question"
}

TestANameServerThatDoesNotAnswerIsATemporaryFailure() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=known.test,${ipv4[beta]}"
  make_socket alpha client stream ipv4
  filter names drop
  SECONDS=0
  expect alpha "resolve known.test" "$(resolve_failed known.test 11002)"
  expect alpha "connect client known.test 7000" "$(connect_not_resolved known.test 7000 11002)"
  [ "$SECONDS" -lt 20 ] || fail "that took $SECONDS s"
}

TestTheOwnNameNeedsNoNameServerThatKnowsIt() {
  add_host alpha
  add_host beta
  with_names alpha
  expect alpha "create client stream" "ok ipv6"
  filter names drop
  expect alpha "create client stream" "ok ipv6"
}

TestAnOwnNameThatANameServerFailsToTellIsATemporaryFailure() {
  add_host alpha
  with_failing_names alpha
  expect alpha "create client stream" "$(create_failed 11002)"
  expect alpha "resolve alpha" "$(resolve_failed alpha 11002)"
  know_names alpha "${ipv4[alpha]} alpha"
  expect alpha "create client stream" "ok ipv4"
}

TestLocalhostNeedsNeitherTableNorServer() {
  add_host alpha
  with_failing_names alpha
  echo '# nobody' >"$world/alpha/hosts"
  expect alpha "resolve localhost" "ok 127.0.0.1"
  rm "$world/alpha/hosts"
  expect alpha "resolve localhost" "ok 127.0.0.1"
}

TestTheNextNameServerIsAskedWhenTheFirstDoesNotAnswer() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=known.test,${ipv4[beta]}"
  use_names alpha "nameserver ${ipv4[beta]}" "nameserver ${ipv6[names]}" "options timeout:1"
  filter beta drop
  expect alpha "resolve known.test" "ok ${ipv4[beta]}"
}

TestAHostThatRefusesQuestionsIsATemporaryFailure() {
  add_host alpha
  add_host beta
  use_names alpha "nameserver ${ipv4[beta]}"
  expect alpha "resolve known.test" "$(resolve_failed known.test 11002)"
}

TestAnUnknownNameIsToldFromOneWithoutAnAddress() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=six.test,${ipv6[beta]}" --txt-record=text.test,words
  make_socket alpha client stream ipv6
  expect alpha "resolve nobody.test" "$(resolve_failed nobody.test 11001)"
  expect alpha "resolve six.test" "$(resolve_failed six.test 11004)"
  expect alpha "connect client nobody.test 7000" "$(connect_not_resolved nobody.test 7000 11001)"
  expect alpha "connect client text.test 7000" "$(connect_not_resolved text.test 7000 11004)"
}

TestAShortNameIsLookedUpInTheSearchedDomains() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=beta.second.test,${ipv4[beta]}"
  use_names alpha "nameserver ${ipv4[names]}" "search first.test second.test"
  expect alpha "resolve beta" "ok ${ipv4[beta]}"
}

TestAChangeOfTheResolverSettingsCountsAtOnce() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=known.test,${ipv4[beta]}"
  use_names alpha "nameserver ${ipv4[beta]}"
  expect alpha "resolve known.test" "$(resolve_failed known.test 11002)"
  use_names alpha "nameserver ${ipv4[names]}"
  expect alpha "resolve known.test" "ok ${ipv4[beta]}"
}

TestAnAddressHasTheNameThatTheServerKnows() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=known.test,${ipv4[beta]}" --local=/2.0.192.in-addr.arpa/
  expect alpha "reverse ${ipv4[beta]}" "ok known.test"
  expect alpha "reverse 192.0.2.99" "$(reverse_failed 192.0.2.99 11004)"
  filter names drop
  expect alpha "reverse ${ipv4[beta]}" "$(reverse_failed "${ipv4[beta]}" 11002)"
}

# Whoever has an address decides what its name is.
TestANameFromTheNetworkMayBeAnything() {
  add_host alpha
  with_names alpha --ptr-record=10.2.0.192.in-addr.arpa,127.0.0.1 --ptr-record=11.2.0.192.in-addr.arpa,localhost \
    --ptr-record=12.2.0.192.in-addr.arpa,.
  expect alpha "reverse 192.0.2.10" "ok 127.0.0.1"
  expect alpha "reverse 192.0.2.11" "ok localhost"
  expect alpha "reverse 192.0.2.12" "ok ."
}

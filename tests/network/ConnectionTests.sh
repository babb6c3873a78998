# shellcheck shell=bash disable=SC2154  # Network.sh and Agents.sh have the hosts
# What becomes of connections when something between the hosts goes wrong.

# The same for both families: for_both_families FUNCTION
for_both_families() {
  local family
  for family in ipv4 ipv6; do
    "$1" "$family"
  done
}

# The address of a host, by family: address_of HOST ipv4|ipv6
address_of() {
  local -n addresses_of_family=$2
  echo "${addresses_of_family[$1]}"
}

# As connect_hosts, with classic sockets.
connect_classic_hosts() {
  expect "$2" "create server classic-stream" "ok ipv4"
  expect "$2" "bind server ${ipv4[$2]} 7000" ok
  expect "$2" "listen server" ok
  expect "$1" "create client classic-stream" "ok ipv4"
  expect "$1" "connect client ${ipv4[$2]} 7000" ok
  ask "$2" "accept server peer"
  [[ $answer = "ok ${ipv4[$1]} "* ]] || fail "$2 accepted '$answer'"
}

# --- Links

# Cuts the link in the middle of a transfer and waits for both timeouts:
# cut_transfer ANSWER-OF-SENDER ANSWER-OF-RECEIVER
cut_transfer() {
  expect alpha "timeouts client 1000" ok
  tell beta "receive-up-to peer 3000000"
  tell alpha "send-up-to client 1000000000"
  expect_later beta ok
  cut_link beta
  expect beta "timeouts peer 300" ok
  expect beta "receive-until-failure peer" "$2"
  expect_later alpha "$1"
}

TestACutLinkShowsInTheTimeouts() {
  add_host alpha
  add_host beta
  connect_hosts alpha beta ipv4
  cut_transfer "$(send_failed alpha:0 "${ipv4[beta]}:7000" 10060)" "$(receive_failed : : 10060)"
}

TestACutLinkShowsInTheTimeoutsOfIpv6() {
  add_host alpha
  add_host beta
  connect_hosts alpha beta ipv6
  cut_transfer "$(send_failed alpha:0 "${ipv6[beta]}:7000" 10060)" "$(receive_failed : : 10060)"
}

TestACutLinkShowsInTheTimeoutsOfClassicSockets() {
  add_host alpha
  add_host beta
  connect_classic_hosts alpha beta
  cut_transfer "$(classic_send_failed 10060)" "$(classic_receive_failed 10060)"
}

TestATransferGoesOnWhenTheLinkIsMended() {
  add_host alpha
  add_host beta
  connect_hosts alpha beta ipv4
  tell alpha "send-up-to client 20000000"
  expect beta "receive-up-to peer 3000000" ok
  cut_link beta
  expect beta "timeouts peer 300" ok
  expect beta "receive-until-failure peer" "$(receive_failed : : 10060)"
  mend_link beta
  expect beta "timeouts peer 0" ok
  expect beta "receive-up-to peer 20000000" ok
  expect_later alpha ok
}

TestATransferOverALossyLinkArrivesWhole() {
  add_host alpha
  add_host beta
  connect_hosts alpha beta ipv6
  filter beta "numgen inc mod 10 0 drop"
  filter alpha "numgen inc mod 7 0 drop"
  tell alpha "send-up-to client 1000000"
  expect beta "receive-up-to peer 1000000" ok
  expect_later alpha ok
  tell beta "send-up-to peer 1000000"
  expect alpha "receive-up-to client 1000000" ok
  expect_later beta ok
}

# The kernel tries a few minutes long, unless it is told otherwise.
TestAConnectionWhosePeerIsGoneIsGivenUp() {
  add_host alpha
  add_host beta
  connect_hosts alpha beta ipv4
  local ends="alpha:0 ${ipv4[beta]}:7000"
  in_host alpha bash -c 'echo 1 >/proc/sys/net/ipv4/tcp_retries2'
  cut_link beta
  expect alpha "send client question" "ok 8"
  # shellcheck disable=SC2086  # two words
  {
    expect alpha "receive client" "$(receive_failed $ends 10060)"
    expect alpha "receive client" "$(receive_failed $ends 10053)"
    expect alpha "send client question" "$(send_failed $ends 10053)"
  }
}

# --- Filters that refuse

# What the network reports when a filter refuses: FAMILY
refusal_of() {
  if [ "$1" = ipv4 ]; then echo 10065; else echo 10013; fi
}

# The first two attempts are refused, the kernel's third is not. The first refusal comes while the
# kernel is still sending, which then may not tell it.
meet_passing_refusal() {
  local refusal
  refusal="alpha:0 $(address_of beta "$1"):7000 $(refusal_of "$1")"
  filter beta
  connect_hosts alpha beta "$1"
  expect alpha "reports client" ok
  filter beta "tcp dport 7000 numgen inc mod 1000 < 2 reject with icmpx admin-prohibited"
  expect alpha "send client question" "ok 8"
  # shellcheck disable=SC2086  # three words
  expect alpha "receive client" "$(receive_failed $refusal)"
  expect beta "receive peer" "ok question"
  ask alpha "send client more"
  # shellcheck disable=SC2086  # three words
  [ "$answer" != "$(send_failed $refusal)" ] || ask alpha "send client more"
  [ "$answer" = "ok 4" ] || fail "alpha's connection is gone: $answer"
  expect beta "receive peer" "ok more"
  expect beta "send peer answer" "ok 6"
  expect alpha "receive client" "ok answer"
  expect beta "close server" ok
}

TestAFilterThatRefusesForAWhileEndsNoConnection() {
  add_host alpha
  add_host beta
  for_both_families meet_passing_refusal
}

# Nobody is told who has not asked, and the own host's filter is no other.
pass_refusal() {
  filter beta
  connect_hosts alpha beta "$1"
  filter beta "tcp dport 7000 numgen inc mod 1000 0 reject with icmpx admin-prohibited"
  output_filter alpha "tcp dport 7000 numgen inc mod 1000 0 reject with icmpx admin-prohibited"
  expect alpha "send client question" "ok 8"
  expect beta "receive peer" "ok question"
  output_filter alpha "tcp dport 7000 numgen inc mod 1000 0 drop"
  expect alpha "send client more" "ok 4"
  expect beta "receive peer" "ok more"
  output_filter alpha
  expect beta "send peer answer" "ok 6"
  expect alpha "receive client" "ok answer"
  expect beta "close server" ok
}

TestARefusalThatNobodyAskedForIsNotTold() {
  add_host alpha
  add_host beta
  for_both_families pass_refusal
}

# The kernel's last reason is told, and then that there is no connection any more.
meet_lasting_refusal() {
  local ends
  ends="alpha:0 $(address_of beta "$1"):7000"
  filter beta
  connect_hosts alpha beta "$1"
  filter beta "tcp dport 7000 reject with icmpx admin-prohibited"
  expect alpha "send client question" "ok 8"
  # shellcheck disable=SC2086  # two words
  {
    expect alpha "receive client" "$(receive_failed $ends "$(refusal_of "$1")")"
    expect alpha "receive client" "$(receive_failed $ends 10053)"
    expect alpha "send client question" "$(send_failed $ends 10053)"
  }
  expect beta "close server" ok
}

TestAFilterThatGoesOnRefusingEndsTheConnection() {
  add_host alpha
  add_host beta
  in_host alpha bash -c 'echo 1 >/proc/sys/net/ipv4/tcp_retries2'
  for_both_families meet_lasting_refusal
}

# --- Resets

meet_reset() {
  local target ends
  target=$(address_of beta "$1")
  ends="alpha:0 $target:7000"
  filter beta
  connect_hosts alpha beta "$1"
  filter beta "tcp dport 7000 reject with tcp reset"
  expect alpha "send client question" "ok 8"
  # shellcheck disable=SC2086  # two words
  {
    expect alpha "receive client" "$(receive_failed $ends 10054)"
    expect alpha "receive client" "$(receive_failed $ends 10054)"
    expect alpha "send client question" "$(send_failed $ends 10054)"
  }
  expect beta "close server" ok
}

TestAResetOnTheWayEndsAConnectionForGood() {
  add_host alpha
  add_host beta
  for_both_families meet_reset
}

TestAResetOnTheWayEndsAClassicConnectionForGood() {
  add_host alpha
  add_host beta
  connect_classic_hosts alpha beta
  filter beta "tcp dport 7000 reject with tcp reset"
  expect alpha "send client question" "ok 8"
  expect alpha "receive client" "$(classic_receive_failed 10054)"
  expect alpha "receive client" "$(classic_receive_failed 10054)"
  expect alpha "send client question" "$(classic_send_failed 10054)"
}

# Event 3 is the close event, event 1 the one of bytes to read.
TestSelectFindsAResetConnectionClosed() {
  add_host alpha
  add_host beta
  connect_classic_hosts alpha beta
  expect alpha "select client 3 0" ok
  filter beta "tcp dport 7000 reject with tcp reset"
  expect alpha "send client question" "ok 8"
  expect alpha "select client 3 60" "ok 3"
  expect alpha "select client 1 0" ok
}

meet_refusal() {
  local target
  target=$(address_of beta "$1")
  make_socket alpha client stream "$1"
  expect alpha "connect client $target 7000" "$(connect_failed alpha "$target:7000" 10061)"
}

TestAConnectThatIsResetOnTheWayIsRefused() {
  add_host alpha
  add_host beta
  listen_on beta four ipv4 7000
  listen_on beta six ipv6 7000
  filter beta "tcp dport 7000 reject with tcp reset"
  for_both_families meet_refusal
}

# --- Connects that take their time

# start_connecting NUMBER: the first answer of a non-blocking connect to beta, whose filter stands.
start_connecting() {
  expect alpha "create client classic-stream" "ok ipv4"
  expect alpha "non-blocking client" ok
  expect alpha "connect client ${ipv4[beta]} 7000" "$(connecting 10035)"
  expect alpha "connect client ${ipv4[beta]} 7000" "$(connecting 10037)"
  expect alpha "send client question" "$(classic_send_failed 10057)"
}

connecting() {
  classic_connect_failed "${ipv4[beta]}:7000" "$1"
}

# Until the connect is no longer on its way; what it is told then is left in answer.
await_connect() {
  until ask alpha "connect client ${ipv4[beta]} 7000" && [ "$answer" != "$(connecting 10037)" ]; do
    still_waiting "alpha is still connecting"
  done
}

TestAConnectThatGoesOnIsToldOfWhenItIsOver() {
  add_host alpha
  add_host beta
  listen_on beta server ipv4 7000
  filter beta "tcp dport 7000 drop"
  start_connecting
  filter beta
  await_connect
  [ "$answer" = "$(connecting 10056)" ] || fail "$answer"
  ask beta "accept server peer"
  expect alpha "send client question" "ok 8"
  expect beta "receive peer" "ok question"
}

TestAConnectThatWasRefusedStartsAnew() {
  add_host alpha
  add_host beta
  listen_on beta server ipv4 7000
  filter beta "tcp dport 7000 drop"
  start_connecting
  filter beta "tcp dport 7000 reject with tcp reset"
  await_connect
  [ "$answer" = "$(connecting 10035)" ] || fail "$answer"
}

# --- Unreachable hosts and networks

# The failure of a connect to a host that need not exist: meet_unreachable FAMILY ADDRESS NUMBER
meet_unreachable() {
  make_socket alpha client stream "$1"
  expect alpha "connect client $2 7000" "$(connect_failed alpha "$2:7000" "$3")"
}

TestANetworkWithoutARouteIsUnreachable() {
  add_host alpha
  meet_unreachable ipv4 203.0.113.1 10051
  meet_unreachable ipv6 2001:db8:ffff::1 10051
  expect alpha "create client classic-stream" "ok ipv4"
  expect alpha "connect client 203.0.113.1 7000" "$(classic_connect_failed 203.0.113.1:7000 10051)"
}

TestAHostThatIsNotOnTheWireIsUnreachable() {
  add_host alpha
  hurry_neighbours alpha
  meet_unreachable ipv4 192.0.2.99 10065
  meet_unreachable ipv6 2001:db8::99 10065
}

TestWhatARouterKnowsNoWayToIsUnreachable() {
  add_host alpha
  add_host router
  route_through alpha router
  meet_unreachable ipv4 203.0.113.1 10051
  meet_unreachable ipv6 2001:db8:ffff::1 10051
}

TestAHostThatARouterCannotReachIsUnreachable() {
  add_host alpha
  add_host router
  route_through alpha router
  in_host router ip route add unreachable 203.0.113.0/24
  meet_unreachable ipv4 203.0.113.1 10065
}

TestAHostThatARouterForbidsIsUnreachable() {
  add_host alpha
  add_host router
  route_through alpha router
  in_host router ip route add prohibit 203.0.113.0/24
  in_host router ip route add prohibit 2001:db8:ffff::/64
  meet_unreachable ipv4 203.0.113.1 10065
  meet_unreachable ipv6 2001:db8:ffff::1 10065
}

TestAHostThatIsForbiddenHereIsNotPermitted() {
  add_host alpha
  in_host alpha ip route add prohibit 203.0.113.0/24
  in_host alpha ip route add prohibit 2001:db8:ffff::/64
  meet_unreachable ipv4 203.0.113.1 10013
  meet_unreachable ipv6 2001:db8:ffff::1 10013
}

TestAHostThatDoesNotAnswerIsGivenUp() {
  add_host alpha
  add_host beta
  add_address beta 192.0.2.102/24
  with_names alpha "--host-record=pair.test,${ipv4[beta]}" --host-record=pair.test,192.0.2.102
  listen_on beta server ipv4 7000
  filter beta "ip daddr ${ipv4[beta]} tcp dport 7000 drop"
  in_host alpha bash -c 'echo 1 >/proc/sys/net/ipv4/tcp_syn_retries'
  meet_unreachable ipv4 "${ipv4[beta]}" 10060
  expect alpha "connect client pair.test 7000" ok
  ask beta "accept server peer"
  expect alpha "send client question" "ok 8"
  expect beta "receive peer" "ok question"
}

# The system left to itself takes more than two minutes, Windows 21 seconds.
TestAHostThatDoesNotAnswerIsGivenUpInAFairTime() {
  add_host alpha
  add_host beta
  add_host gamma
  filter beta "tcp dport 7000 drop"
  make_socket alpha client stream ipv4
  make_socket gamma client stream ipv6
  SECONDS=0
  tell alpha "connect client ${ipv4[beta]} 7000"
  tell gamma "connect client ${ipv6[beta]} 7000"
  expect_later alpha "$(connect_failed alpha "${ipv4[beta]}:7000" 10060)"
  expect_later gamma "$(connect_failed gamma "${ipv6[beta]}:7000" 10060)"
  echo "given up after $SECONDS seconds"
  [ "$SECONDS" -ge 14 ] || fail "given up after $SECONDS seconds"
  [ "$SECONDS" -le 45 ] || fail "given up after $SECONDS seconds"
}

# From the address that this machine has for itself nothing leads out of it.
TestAnAddressThatTheOwnOneDoesNotReachIsNone() {
  add_host alpha
  add_host beta
  listen_on beta server ipv4 7000
  make_socket alpha client stream ipv4
  expect alpha "bind client 127.0.0.1 0" ok
  expect alpha "connect client ${ipv4[beta]} 7000" \
    "$(connect_failed alpha "${ipv4[beta]}:7000" 10049)"
}

# The answer to another attempt is not spoilt by the one before.
TestASocketThatFoundNoWayConnectsElsewhere() {
  add_host alpha
  add_host beta
  listen_on beta server ipv4 7000
  meet_unreachable ipv4 203.0.113.1 10051
  expect alpha "connect client ${ipv4[beta]} 7000" ok
  expect alpha "send client question" "ok 8"
  ask beta "accept server peer"
  expect beta "receive peer" "ok question"
}

pass_over_trouble() {
  filter beta
  connect_hosts alpha beta "$1"
  filter beta "tcp dport 7000 reject with icmpx admin-prohibited"
  expect alpha "send client question" "ok 8"
  await_count alpha "$2"
  filter beta
  expect beta "receive peer" "ok question"
  expect beta "send peer answer" "ok 6"
  expect alpha "receive client" "ok answer"
  expect beta "close server" ok
}

TestAConnectionOutlivesWhatTheNetworkSaysOfIt() {
  add_host alpha
  add_host beta
  pass_over_trouble ipv4 IcmpInDestUnreachs
  pass_over_trouble ipv6 Icmp6InDestUnreachs
}

# --- Addresses of one link

TestALinkLocalPeerIsToldWithItsLink() {
  add_host alpha
  add_host beta
  local link_local
  link_local=$(in_host beta ip -6 -o address show dev eth0 scope link |
    sed 's/.*inet6 \([^/]*\).*/\1/')
  listen_on beta server ipv6 7000
  make_socket alpha client stream ipv6
  expect alpha "connect client $link_local%eth0 7000" ok
  ask beta "accept server peer"
  [[ $answer =~ ^"ok fe80::"[0-9a-f:]+"%$(link_of beta) "[0-9]+$ ]] || fail "$answer"
}

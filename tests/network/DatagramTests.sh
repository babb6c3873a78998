# shellcheck shell=bash disable=SC2154  # Network.sh and Agents.sh have the hosts
# Datagrams between hosts: groups, broadcast, and what comes back from those that did not arrive.

# --- Names

TestANameIsResolvedAnewForEachDatagram() {
  add_host alpha
  add_host beta
  add_host gamma
  local host
  bound_socket alpha sender datagram ipv4 7001
  for host in beta gamma; do
    bound_socket "$host" receiver datagram ipv4 7000
    know_names alpha "${ipv4[$host]} target.test"
    expect alpha "send-to sender target.test 7000 question" "ok 8"
    expect "$host" "receive-from receiver" "ok question ${ipv4[alpha]} 7001"
  done
}

# --- Groups

# alpha sends to the group, whose members are told apart by socket: meet_group FAMILY GROUP
meet_group() {
  add_host alpha
  add_host beta
  add_host gamma
  local host
  for host in alpha beta gamma; do
    in_host "$host" ip route add default dev eth0
  done
  bound_socket alpha sender datagram "$1" 7001
  bound_socket beta receiver datagram "$1" 7000
  bound_socket beta bystander datagram "$1" 7002
  bound_socket gamma receiver datagram "$1" 7000
  expect beta "multicast receiver $2 0" ok

  tell_everybody first "$1" "$2"
  expect beta "receive-from receiver" "ok first $sender"
  expect beta "receive-from receiver" "ok after-first $sender"
  expect beta "receive-from bystander" "ok after-first $sender"
  expect gamma "receive-from receiver" "ok after-first $sender"

  expect beta "multicast receiver $2 1" ok
  expect beta "multicast bystander $2 0" ok
  expect gamma "multicast receiver $2 0" ok
  tell_everybody second "$1" "$2"
  expect beta "receive-from receiver" "ok after-second $sender"
  expect beta "receive-from bystander" "ok second $sender"
  expect gamma "receive-from receiver" "ok second $sender"
}

# To the group first, then to each host itself: what comes first at a socket tells whether the
# group's datagram came. tell_everybody TEXT FAMILY GROUP
tell_everybody() {
  local -n hosts=$2
  local port
  sender="${hosts[alpha]} 7001"
  for port in 7000 7002; do
    expect alpha "send-to sender $3 $port $1" "ok ${#1}"
    expect alpha "send-to sender ${hosts[beta]} $port after-$1" "ok $((${#1} + 6))"
  done
  expect alpha "send-to sender ${hosts[gamma]} 7000 after-$1" "ok $((${#1} + 6))"
}

TestOnlyMembersReceiveFromAGroupOfIpv4() {
  meet_group ipv4 239.1.2.3
}

TestOnlyMembersReceiveFromAGroupOfIpv6() {
  meet_group ipv6 ff15::1:2:3
}

# This group's packets come to every host, whoever joined. A sender has its address of the link.
TestOnlyMembersReceiveWhatIsForAllNodes() {
  add_host alpha
  add_host beta
  add_host gamma
  bound_socket alpha sender datagram ipv6 7001
  bound_socket beta receiver datagram ipv6 7000
  bound_socket beta bystander datagram ipv6 7002
  bound_socket gamma receiver datagram ipv6 7000
  expect beta "multicast receiver ff02::1 0" ok

  tell_everybody first ipv6 ff02::1
  expect_link_local beta receiver first 7001
  local sender_on_link=${answer#ok first }
  expect beta "receive-from receiver" "ok after-first $sender"
  expect beta "receive-from bystander" "ok after-first $sender"
  expect gamma "receive-from receiver" "ok after-first $sender"

  expect beta "multicast receiver [broadcast] 1" ok
  tell_everybody second ipv6 "[broadcast]"
  expect beta "receive-from receiver" "ok after-second $sender"
  expect beta "receive-from bystander" "ok after-second $sender"
  expect gamma "receive-from receiver" "ok after-second $sender"

  expect beta "send-to receiver $sender_on_link answer" "ok 6"
  expect_link_local alpha sender answer 7000
}

# expect_link_local HOST SOCKET TEXT PORT: a datagram from an address of the link.
expect_link_local() {
  ask "$1" "receive-from $2"
  [[ $answer =~ ^"ok $3 fe80::"[0-9a-f:]+"%$(link_of "$1") $4"$ ]] || fail "$1 heard '$answer'"
}

TestAGroupThatWasNeverJoinedCannotBeLeft() {
  add_host alpha
  in_host alpha ip route add default dev eth0
  bound_socket alpha four datagram ipv4 7000
  expect alpha "multicast four 239.1.2.3 1" "$(multicast_failed DROP 10022)"
  expect alpha "multicast four 239.1.2.3 7" "$(multicast_failed DROP 10042)"
  expect alpha "multicast four 239.1.2.3 0" ok
  expect alpha "multicast four 239.1.2.3 0" "$(multicast_failed ADD 10049)"
  expect alpha "multicast four 239.1.2.3 1" ok
  expect alpha "multicast four 239.1.2.3 1" "$(multicast_failed DROP 10022)"
  expect alpha "multicast four [broadcast] 0" "$(multicast_failed ADD 10022)"
  bound_socket alpha six datagram ipv6 7000
  expect alpha "multicast six ff15::1:2:3 1" "$(multicast_failed DROP 10022)"
  expect alpha "multicast six ff02::1 7" "$(multicast_failed DROP 10042)"
}

# A group's name has addresses of both families; the socket takes its own.
TestAGroupOfBothFamiliesIsJoinedInTheSocketsOwn() {
  add_host alpha
  add_host beta
  in_host alpha ip route add default dev eth0
  in_host beta ip route add default dev eth0
  with_names beta --host-record=group.test,239.1.2.3,ff15::1:2:3
  bound_socket beta receiver datagram ipv4 7000
  expect beta "multicast receiver group.test 0" ok
  bound_socket alpha sender datagram ipv4 7001
  expect alpha "send-to sender 239.1.2.3 7000 question" "ok 8"
  expect beta "receive-from receiver" "ok question ${ipv4[alpha]} 7001"
}

# --- Broadcast

TestABroadcastReachesEverybodyOnceItIsAllowed() {
  add_host alpha
  add_host beta
  add_host gamma
  in_host alpha ip route add default dev eth0
  local host
  for host in beta gamma; do
    bound_socket "$host" receiver datagram ipv4 7000
  done
  bound_socket alpha sender datagram ipv4 7001
  expect alpha "send-to sender 255.255.255.255 7000 question" \
    "$(send_to_failed 255.255.255.255 7000 10013)"
  expect alpha "broadcast sender" ok
  expect alpha "send-to sender 255.255.255.255 7000 question" "ok 8"
  expect alpha "send-to sender [broadcast] 7000 more" "ok 4"
  expect alpha "send-to sender 192.0.2.255 7000 last" "ok 4"
  for host in beta gamma; do
    expect "$host" "receive-from receiver" "ok question ${ipv4[alpha]} 7001"
    expect "$host" "receive-from receiver" "ok more ${ipv4[alpha]} 7001"
    expect "$host" "receive-from receiver" "ok last ${ipv4[alpha]} 7001"
  done
}

# The kernel asks its routes where such datagrams go.
TestWithoutARouteThereIsNoBroadcastAndNoGroup() {
  add_host alpha
  bound_socket alpha socket datagram ipv4 7000
  expect alpha "broadcast socket" ok
  expect alpha "send-to socket [broadcast] 7000 question" \
    "$(send_to_failed 255.255.255.255 7000 10051)"
  expect alpha "multicast socket 239.1.2.3 0" "$(multicast_failed ADD 10049)"
  expect alpha "send-to socket 239.1.2.3 7000 question" "$(send_to_failed 239.1.2.3 7000 10051)"
}

# --- Another peer

# What the peer receives, and from where: meets HOST SENDER-ADDRESS
meets() {
  expect alpha "send client question" "ok 8"
  ask "$1" "receive-from server"
  [[ "$answer " = "ok question $2 "* ]] || fail "$1 heard '$answer'"
}

TestADatagramSocketGoesFromThisMachineToAFarPeer() {
  add_host alpha
  add_host beta
  bound_socket alpha server datagram ipv4 7000
  bound_socket beta server datagram ipv4 7000
  expect alpha "create client classic-datagram" "ok ipv4"
  expect alpha "connect client 127.0.0.1 7000" ok
  meets alpha 127.0.0.1
  expect alpha "connect client ${ipv4[beta]} 7000" ok
  meets beta "${ipv4[alpha]}"
  expect alpha "connect client 127.0.0.1 7000" ok
  meets alpha 127.0.0.1
}

TestADatagramSocketComesFromTheAddressOnThePeersNetwork() {
  add_host alpha
  add_host beta
  add_address alpha 198.51.100.1/24
  add_address beta 198.51.100.2/24
  bound_socket beta server datagram ipv4 7000
  bound_socket alpha client datagram ipv4 7001
  expect alpha "connect client ${ipv4[beta]} 7000" ok
  meets beta "${ipv4[alpha]}"
  expect alpha "connect client 198.51.100.2 7000" ok
  meets beta 198.51.100.1
}

TestADatagramSocketComesFromTheIpv6AddressOnThePeersNetwork() {
  add_host alpha
  add_host beta
  in_host alpha ip address add 2001:db8:1::1/64 dev eth0 nodad
  in_host beta ip address add 2001:db8:1::2/64 dev eth0 nodad
  bound_socket beta server datagram ipv6 7000
  bound_socket alpha client datagram ipv6 7001
  expect alpha "connect client 2001:db8:1::2 7000" ok
  meets beta 2001:db8:1::1
  expect alpha "connect client ${ipv6[beta]} 7000" ok
  meets beta "${ipv6[alpha]}"
}

# There is no route from the local host's inner address to beta.
TestAnAddressThatWasBoundIsKeptForEveryPeer() {
  add_host alpha
  add_host beta
  expect alpha "create client classic-datagram" "ok ipv4"
  expect alpha "bind client 127.0.0.1 7001" ok
  expect alpha "connect client ${ipv4[beta]} 7000" \
    "$(classic_connect_failed "${ipv4[beta]}:7000" 10049)"
  bound_socket alpha server datagram ipv4 7000
  expect alpha "connect client 127.0.0.1 7000" ok
  meets alpha "127.0.0.1 7001"
}

# --- What did not arrive

# What was sent did not arrive, the next receive call tells so, and the socket lives on:
# meet_lost FAMILY HOST-ADDRESS
meet_lost() {
  local -n hosts=$1
  bound_socket alpha sender datagram "$1" 7001
  expect alpha "send-to sender $2 7009 question" "ok 8"
  expect alpha "receive-from sender" "$(receive_from_failed 10054)"
  bound_socket beta receiver datagram "$1" 7000
  expect alpha "send-to sender ${hosts[beta]} 7000 question" "ok 8"
  expect beta "receive-from receiver" "ok question ${hosts[alpha]} 7001"
  expect beta "send-to receiver ${hosts[alpha]} 7001 answer" "ok 6"
  expect alpha "receive-from sender" "ok answer ${hosts[beta]} 7000"
}

TestADatagramToAPortOfNobodyComesBackAsAReset() {
  add_host alpha
  add_host beta
  meet_lost ipv4 "${ipv4[beta]}"
  meet_lost ipv6 "${ipv6[beta]}"
}

TestADatagramThatAFilterForbidsComesBackAsAReset() {
  add_host alpha
  add_host beta
  filter beta "udp dport 7009 reject with icmpx admin-prohibited"
  meet_lost ipv4 "${ipv4[beta]}"
  meet_lost ipv6 "${ipv6[beta]}"
}

TestADatagramThatARouterCannotPassOnComesBackAsAReset() {
  add_host alpha
  add_host beta
  add_host router
  route_through alpha router
  in_host router ip route add unreachable 203.0.113.0/24
  meet_lost ipv4 203.0.113.1
  meet_lost ipv4 198.51.100.1
  meet_lost ipv6 2001:db8:ffff::1
}

# Nothing goes farther than to the router: meet_end_of_hops FAMILY TARGET
meet_end_of_hops() {
  bound_socket alpha sender datagram "$1" 7001
  expect alpha "send-to sender $2 7000 one" "ok 3"
  expect alpha "send-to sender $2 7000 two" "ok 3"
  expect alpha "receive-from sender" "$(receive_from_failed 10052)"
  expect alpha "receive-from sender" "$(receive_from_failed 10052)"
  expect alpha "timeouts sender 100" ok
  expect alpha "receive-from sender" "$(receive_from_failed 10060)"
}

TestADatagramWithTooManyHopsAheadComesBackAsANetworkReset() {
  add_host alpha
  add_host beta
  add_host router
  route_through alpha router
  in_host router ip route add 203.0.113.0/24 via "${ipv4[beta]}"
  in_host router ip route add 2001:db8:ffff::/48 via "${ipv6[beta]}"
  in_host alpha bash -c 'echo 1 >/proc/sys/net/ipv4/ip_default_ttl
    echo 1 >/proc/sys/net/ipv6/conf/eth0/hop_limit'
  meet_end_of_hops ipv4 203.0.113.1
  meet_end_of_hops ipv6 2001:db8:ffff::1
}

# One failure for each datagram, however many come back before somebody looks.
TestEachDatagramThatComesBackIsToldOfOnce() {
  add_host alpha
  add_host beta
  local text
  bound_socket alpha sender datagram ipv4 7001
  for text in one two six; do
    expect alpha "send-to sender ${ipv4[beta]} 7009 $text" "ok 3"
  done
  expect alpha "receive-from sender" "$(receive_from_failed 10054)"
  expect alpha "receive-from sender" "$(receive_from_failed 10054)"
  expect alpha "receive-from sender" "$(receive_from_failed 10054)"
  expect alpha "timeouts sender 100" ok
  expect alpha "receive-from sender" "$(receive_from_failed 10060)"
}

TestAClassicDatagramToAPortOfNobodyComesBackAsAReset() {
  add_host alpha
  add_host beta
  expect alpha "create client classic-datagram" "ok ipv4"
  expect alpha "connect client ${ipv4[beta]} 7000" ok
  expect alpha "send client question" "ok 8"
  expect alpha "receive client" "$(classic_receive_failed 10054)"
  bound_socket beta server datagram ipv4 7000
  expect alpha "send client question" "ok 8"
  ask beta "receive-from server"
  [[ $answer = "ok question ${ipv4[alpha]} "* ]] || fail "$answer"
  expect beta "send-to server ${answer#ok question } answer" "ok 6"
  expect alpha "receive client" "ok answer"
}

TestADatagramWithoutARouteIsNotSent() {
  add_host alpha
  bound_socket alpha sender datagram ipv4 7001
  expect alpha "send-to sender 203.0.113.1 7000 question" "$(send_to_failed 203.0.113.1 7000 10051)"
  bound_socket alpha sender datagram ipv6 7001
  expect alpha "send-to sender 2001:db8:ffff::1 7000 question" \
    "$(send_to_failed 2001:db8:ffff::1 7000 10051)"
}

# --- Sizes

# One that takes many packets, in both directions of either family.
TestTheLongestDatagramArrivesWhole() {
  add_host alpha
  add_host beta
  local text family
  text=$(printf '%065507d' 1)
  for family in ipv4 ipv6; do
    local -n hosts=$family
    bound_socket alpha sender datagram "$family" 7001
    bound_socket beta receiver datagram "$family" 7000
    expect alpha "send-to sender ${hosts[beta]} 7000 $text" "ok 65507"
    expect beta "receive-from receiver" "ok $text ${hosts[alpha]} 7001"
    expect beta "send-to receiver ${hosts[alpha]} 7001 -" "ok 0"
    expect alpha "receive-from sender" "ok  ${hosts[beta]} 7000"
  done
}

# The narrow place of alpha's way to beta has room for MTU bytes: narrow_way FAMILY MTU
narrow_way() {
  add_host alpha
  add_host router
  add_host beta
  route_through alpha router
  local -n hosts=$1
  in_host alpha ip route add "${hosts[beta]}" via "${hosts[router]}"
  in_host router ip route add "${hosts[beta]}" dev eth0 mtu lock "$2"
  in_host router bash -c 'echo 0 >/proc/sys/net/ipv4/conf/all/send_redirects
    echo 0 >/proc/sys/net/ipv4/conf/eth0/send_redirects'
}

# send_long FAMILY LENGTH: from alpha to beta, which is told whether it came, and back.
send_long() {
  local -n hosts=$1
  local text
  text=$(printf "%0$2d" 1)
  expect alpha "send-to sender ${hosts[beta]} 7000 $text" "ok $2"
  expect beta "receive-from receiver" "ok $text ${hosts[alpha]} 7001"
  expect beta "send-to receiver ${hosts[alpha]} 7001 answer" "ok 6"
  expect alpha "receive-from sender" "ok answer ${hosts[beta]} 7000"
}

# Routers divide the packets of IPv4, so that nobody has to be told.
TestADatagramFitsThroughANarrowPlaceOnTheWayAtOnce() {
  narrow_way ipv4 600
  filter alpha "icmp type destination-unreachable drop"
  bound_socket alpha sender datagram ipv4 7001
  bound_socket beta receiver datagram ipv4 7000
  expect beta "timeouts receiver 20000" ok
  send_long ipv4 1200
}

# Those of IPv6 only the sender divides, which the network therefore tells of the narrow place. That
# is no failure of the socket.
TestANarrowPlaceOnTheWayIsNoFailure() {
  narrow_way ipv6 1280
  bound_socket alpha sender datagram ipv6 7001
  bound_socket beta receiver datagram ipv6 7000
  local text
  text=$(printf '%01400d' 1)
  expect alpha "send-to sender ${ipv6[beta]} 7000 $text" "ok 1400"
  await_count alpha Icmp6InPktTooBigs
  send_long ipv6 1400
}

# --- A slow link

# slow_link HOST: takes a few packets, and then one in a long while.
slow_link() {
  command -v tc >/dev/null || skip "tc is not installed"
  in_host "$1" tc qdisc add dev eth0 root tbf rate 8kbit burst 1600 limit 4000 ||
    skip "no slow link here"
}

# What the local host drops counts as sent, like what is lost on the way: flood_slow_link
# FAMILY
flood_slow_link() {
  local -n hosts=$1
  local text number
  text=$(printf '%01000d' 1)
  bound_socket alpha sender datagram "$1" 7001
  for ((number = 0; number < 100; ++number)); do
    expect alpha "send-to sender ${hosts[beta]} 7000 $text" "ok 1000"
  done
  [[ $(in_host alpha tc -s qdisc show dev eth0) =~ dropped\ [1-9] ]] || fail "the link took all"
}

TestASlowLinkTakesAllDatagramsOfIpv4() {
  add_host alpha
  add_host beta
  slow_link alpha
  flood_slow_link ipv4
}

TestASlowLinkTakesAllDatagramsOfIpv6() {
  add_host alpha
  add_host beta
  slow_link alpha
  flood_slow_link ipv6
}

# shellcheck shell=bash disable=SC2154  # Network.sh and Agents.sh have the hosts
# What reaches sockets that are bound to an address of their host: beside what is sent to that
# address the datagrams of their groups and broadcasts.

# address_socket HOST NAME ipv4|ipv6 ADDRESS PORT: bound to that address.
address_socket() {
  make_socket "$1" "$2" datagram "$3"
  expect "$1" "bind $2 $4 $5" ok
}

ways=(239.1.2.3 192.0.2.255 255.255.255.255)

# To the group, to everybody on the network, to everybody, and to the addresses themselves, for
# whoever is at the port: tell_all_ways PORT ADDRESS...
tell_all_ways() {
  local target
  for target in "${ways[@]}" "${@:2}"; do
    expect alpha "send-to sender $target $1 $target" "ok ${#target}"
  done
}

# expect_told SOCKET TARGET...: what beta's socket receives first was sent to these.
expect_told() {
  local target heard expected
  heard=$(for target in "${@:2}"; do
    ask beta "receive-from $1"
    echo "$answer"
  done | sort)
  expected=$(printf "ok %s ${ipv4[alpha]} 7001\n" "${@:2}" | sort)
  [ "$heard" = "$expected" ] || fail "beta's $1 heard '$heard'"
}

# alpha is one that may send to all.
add_sender_to_all() {
  add_host alpha
  add_host beta
  in_host alpha ip route add default dev eth0
  in_host beta ip route add default dev eth0
  bound_socket alpha sender datagram ipv4 7001
  expect alpha "broadcast sender" ok
}

# beta_socket NAME ADDRESS PORT: of which much is expected, so that nothing waits for ever.
beta_socket() {
  address_socket beta "$1" ipv4 "$2" "$3"
  expect beta "timeouts $1 20000" ok
}

TestASocketOnAnAddressReceivesItsGroupsAndBroadcasts() {
  add_sender_to_all
  local address port=7010
  for address in "${ipv4[beta]}" "[this-machine]" -; do
    beta_socket receiver "$address" $((++port))
    expect beta "multicast receiver 239.1.2.3 0" ok
    tell_all_ways "$port" "${ipv4[beta]}"
    expect_told receiver "${ways[@]}" "${ipv4[beta]}"
    expect beta "send-to receiver ${ipv4[alpha]} 7001 answer" "ok 6"
    expect alpha "receive-from sender" "ok answer ${ipv4[beta]} $port"
  done
}

TestAGroupMayBeJoinedBeforeTheSocketHasAnAddress() {
  add_sender_to_all
  make_socket beta receiver datagram ipv4
  expect beta "timeouts receiver 20000" ok
  expect beta "multicast receiver 239.1.2.3 0" ok
  expect beta "bind receiver ${ipv4[beta]} 7000" ok
  tell_all_ways 7000 "${ipv4[beta]}"
  expect_told receiver "${ways[@]}" "${ipv4[beta]}"
}

TestAClassicSocketOnAnAddressReceivesBroadcasts() {
  add_sender_to_all
  expect beta "create receiver classic-datagram" "ok ipv4"
  expect beta "timeouts receiver 20000" ok
  expect beta "bind receiver ${ipv4[beta]} 7000" ok
  local target
  for target in 192.0.2.255 255.255.255.255 "${ipv4[beta]}"; do
    expect alpha "send-to sender $target 7000 $target" "ok ${#target}"
    expect beta "receive receiver" "ok $target"
  done
}

# What a host sends to all it hears itself.
TestASocketOnAnAddressReceivesTheBroadcastsOfItsOwnHost() {
  add_sender_to_all
  address_socket alpha receiver ipv4 "${ipv4[alpha]}" 7000
  expect alpha "timeouts receiver 20000" ok
  local target
  for target in 192.0.2.255 255.255.255.255; do
    expect alpha "send-to sender $target 7000 $target" "ok ${#target}"
    expect alpha "receive-from receiver" "ok $target ${ipv4[alpha]} 7001"
  done
}

TestSocketsOnAddressesOfTheirOwnShareAPort() {
  add_sender_to_all
  add_address beta 192.0.2.101/24
  beta_socket first "${ipv4[beta]}" 7000
  beta_socket second 192.0.2.101 7000
  expect beta "multicast first 239.1.2.3 0" ok
  expect beta "multicast second 239.1.2.3 0" ok
  tell_all_ways 7000 "${ipv4[beta]}" 192.0.2.101
  expect_told first "${ways[@]}" "${ipv4[beta]}"
  expect_told second "${ways[@]}" 192.0.2.101
}

# Programs that are not ours, on the same port: one on another address, one that is a member of the
# group and one that hears what is sent to all on the network.
TestASocketOnAnAddressTakesNothingFromOthers() {
  add_sender_to_all
  add_address beta 192.0.2.101/24
  local member=UDP4-RECV:7000,reuseaddr,ip-add-membership=239.1.2.3:192.0.2.2
  beta_socket receiver "${ipv4[beta]}" 7000
  expect beta "multicast receiver 239.1.2.3 0" ok
  start beta socat -u UDP4-RECV:7000,bind=192.0.2.101 OPEN:"$world/neighbour",creat,append
  start beta socat -u "$member,bind=239.1.2.3" OPEN:"$world/member",creat,append
  start beta socat -u UDP4-RECV:7000,bind=192.0.2.255,reuseaddr \
    OPEN:"$world/hearer",creat,append
  await_holders beta 7000 192.0.2.101 239.1.2.3 192.0.2.255
  tell_all_ways 7000 "${ipv4[beta]}" 192.0.2.101
  await_text "$world/neighbour" 192.0.2.101
  await_text "$world/member" 239.1.2.3
  await_text "$world/hearer" 192.0.2.255
  expect_told receiver "${ways[@]}" "${ipv4[beta]}"
}

# await_holders HOST PORT ADDRESS...: until each of the addresses has a socket at the port that
# another program has made.
await_holders() {
  local address
  for address in "${@:3}"; do
    until in_host "$1" ss -Hlnup "sport = :$2" | grep -q " $address:$2 .*socat"; do
      still_waiting "nobody is at $address"
    done
  done
}

# await_text FILE TEXT: until the file has it, and then it has nothing else.
await_text() {
  until [ -s "$1" ]; do
    still_waiting "$1 stays empty"
  done
  [ "$(<"$1")" = "$2" ] || fail "$1 has $(<"$1")"
}

# Others may keep an address of broadcasts to themselves, where a port of their own is meant.
TestABroadcastAddressThatAnotherHasLeavesTheRest() {
  add_sender_to_all
  start beta socat -u UDP4-RECV:7000,bind=192.0.2.255 OPEN:"$world/hearer",creat,append
  await_holders beta 7000 192.0.2.255
  beta_socket receiver "${ipv4[beta]}" 7000
  expect beta "multicast receiver 239.1.2.3 0" ok
  tell_all_ways 7000 "${ipv4[beta]}"
  await_text "$world/hearer" 192.0.2.255
  expect_told receiver 239.1.2.3 255.255.255.255 "${ipv4[beta]}"
}

# beta is on a second network with alpha.
TestABroadcastConcernsTheAddressesOfItsInterface() {
  add_sender_to_all
  ip link add eth1 netns "${holder[alpha]}" type veth peer name eth1 netns "${holder[beta]}"
  local host
  for host in alpha beta; do
    in_host "$host" ip link set eth1 up
  done
  in_host alpha ip address add 198.51.100.1/24 dev eth1
  in_host beta ip address add 198.51.100.2/24 dev eth1
  address_socket alpha other ipv4 198.51.100.1 7002
  expect alpha "broadcast other" ok
  beta_socket near "${ipv4[beta]}" 7000
  beta_socket far 198.51.100.2 7000
  expect alpha "send-to other 255.255.255.255 7000 question" "ok 8"
  expect beta "receive-from far" "ok question 198.51.100.1 7002"
  expect alpha "send-to sender 255.255.255.255 7000 request" "ok 7"
  expect beta "receive-from near" "ok request ${ipv4[alpha]} 7001"
  expect alpha "send-to other 198.51.100.2 7000 last" "ok 4"
  expect beta "receive-from far" "ok last 198.51.100.1 7002"
}

TestAConnectedSocketOnAnAddressHearsItsPeerAlone() {
  add_sender_to_all
  bound_socket alpha stranger datagram ipv4 7002
  expect alpha "broadcast stranger" ok
  beta_socket receiver "${ipv4[beta]}" 7000
  expect beta "connect receiver ${ipv4[alpha]} 7001" ok
  expect beta "multicast receiver 239.1.2.3 0" ok
  local target
  for target in "${ways[@]}" "${ipv4[beta]}"; do
    expect alpha "send-to stranger $target 7000 question" "ok 8"
  done
  tell_all_ways 7000 "${ipv4[beta]}"
  expect_told receiver "${ways[@]}" "${ipv4[beta]}"
}

# join_on_address GROUP: beta, on an IPv6 address of its own, hears of the group, and a bystander on
# the same address does not.
join_on_address() {
  add_host alpha
  add_host beta
  local host
  for host in alpha beta; do
    in_host "$host" ip route add default dev eth0
  done
  address_socket alpha sender ipv6 "${ipv6[alpha]}" 7001
  address_socket beta receiver ipv6 "${ipv6[beta]}" 7000
  address_socket beta bystander ipv6 "${ipv6[beta]}" 7002
  expect beta "timeouts receiver 20000" ok
  expect beta "multicast receiver $1 0" ok
  expect beta "multicast receiver $1 0" "$(multicast_failed ADD 10049)"
  sender="${ipv6[alpha]} 7001"
  tell_everybody_of_ipv6 first "$1"
  expect beta "receive-from receiver" "ok first $sender"
  expect beta "receive-from receiver" "ok after-first $sender"
  expect beta "receive-from bystander" "ok after-first $sender"
  expect beta "multicast receiver $1 1" ok
  expect beta "multicast receiver $1 1" "$(multicast_failed DROP 10022)"
  tell_everybody_of_ipv6 second "$1"
  expect beta "receive-from receiver" "ok after-second $sender"
}

tell_everybody_of_ipv6() {
  local port
  for port in 7000 7002; do
    expect alpha "send-to sender $2 $port $1" "ok ${#1}"
    expect alpha "send-to sender ${ipv6[beta]} $port after-$1" "ok $((${#1} + 6))"
  done
}

TestASocketOnAnIpv6AddressReceivesItsGroups() {
  join_on_address ff15::1:2:3
}

TestASocketOnAnIpv6AddressReceivesWhatIsForAllNodes() {
  join_on_address ff02::1
}

TestASocketOnAnAddressIsToldOfWhatComesBack() {
  add_host alpha
  add_host beta
  address_socket alpha sender ipv4 "${ipv4[alpha]}" 7001
  expect alpha "timeouts sender 20000" ok
  expect alpha "send-to sender ${ipv4[beta]} 7009 question" "ok 8"
  expect alpha "receive-from sender" "$(receive_from_failed 10054)"
  expect alpha "send-to sender ${ipv4[alpha]} 7001 myself" "ok 6"
  expect alpha "receive-from sender" "ok myself ${ipv4[alpha]} 7001"
}


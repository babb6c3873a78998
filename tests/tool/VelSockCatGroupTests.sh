#!/usr/bin/env bash
# velsock-cat's datagrams to many receivers at once, in a network of the test's own.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

receivers=()
diagnostics=()

# start_receiver OPTION... COMMAND [GROUP]: one more receiver on the same port; its output is in receiver.N.
start_receiver() {
  local number=${#receivers[@]}
  launch "$velsock_cat" "$@" "$shared_port" </dev/null || fail "receiver $number was not announced"
  mv peer.out "receiver.$number"
  receivers+=("$peer")
  diagnostics+=("$says")
  peer=""
}

# Nothing but the receivers' own count ends them.
await_receivers() {
  local number
  for number in "${!receivers[@]}"; do
    peer=${receivers[$number]}
    says=${diagnostics[$number]}
    await_peer
    expect_equal "$peer_status" 0
  done
}

use_ipv4() {
  enter_own_network '10.7.7.1 velsock-ipv4' '::1 localhost'
  lay_wire
  ip_command address add 10.7.7.1/24 dev wire
  ip_command route add default dev wire
  take_closed_port udp-listen
  shared_port=$port
}

use_ipv6() {
  enter_own_network '::1 velsock-ipv6' '127.0.0.1 localhost'
  lay_wire
  ip_command -6 address add fd77::1/64 dev wire nodad
  take_closed_port udp-listen
  shared_port=$port
}

TestABroadcastReachesEveryReceiver() {
  use_ipv4
  start_receiver --reuse --count 1 udp-listen 0.0.0.0
  start_receiver --reuse --count 1 udp-listen 0.0.0.0
  run broadcast "$shared_port" < <(printf everyone)
  expect_equal "$status $(cat err)" "0 "
  await_receivers
  expect_equal "$(cat receiver.0) $(cat receiver.1)" "everyone everyone"
}

# The broadcast comes last and ends all receivers, so that what did not arrive before it never did.
TestAGroupsDatagramsReachItsMembersAlone() {
  use_ipv4
  start_receiver --count 2 multicast 239.1.2.3
  start_receiver --count 2 multicast 239.1.2.3
  start_receiver --count 2 multicast 239.1.2.4
  start_receiver --count 1 --reuse udp-listen 0.0.0.0
  run udp-send 239.1.2.3 "$shared_port" < <(printf 'three ')
  expect_equal "$status $(cat err)" "0 "
  run udp-send 239.1.2.4 "$shared_port" < <(printf 'four ')
  run broadcast "$shared_port" < <(printf end)
  await_receivers
  expect_equal "$(cat receiver.0)" "three end"
  expect_equal "$(cat receiver.1)" "three end"
  expect_equal "$(cat receiver.2)" "four end"
  expect_equal "$(cat receiver.3)" "end"
}

# Each receiver's last datagram is sent after those that must not reach it.
TestAnIpv6GroupsDatagramsReachItsMembersAlone() {
  use_ipv6
  start_receiver --count 2 multicast ff15::3
  start_receiver --count 2 multicast ff15::4
  local group
  for group in ff15::3 ff15::4 ff15::3 ff15::4; do
    run udp-send "$group" "$shared_port" < <(printf '%s ' "$group")
    expect_equal "$status $(cat err)" "0 "
  done
  await_receivers
  expect_equal "$(cat receiver.0)" "ff15::3 ff15::3 "
  expect_equal "$(cat receiver.1)" "ff15::4 ff15::4 "
}

TestAnIpv6BroadcastReachesTheMembersOfItsGroup() {
  use_ipv6
  start_receiver --count 1 multicast ff02::1
  start_receiver --count 1 multicast ff02::1
  run broadcast "$shared_port" < <(printf everyone)
  expect_equal "$status $(cat err)" "0 "
  await_receivers
  expect_equal "$(cat receiver.0) $(cat receiver.1)" "everyone everyone"
}

TestSendersOfAGroupAreShown() {
  use_ipv4
  start_receiver --count 1 --from multicast 239.1.2.3
  run udp-send 239.1.2.3 "$shared_port" < <(printf hello)
  await_receivers
  expect_match "$(cat peer.err)" '^5 bytes from 10\.7\.7\.1 port [1-9][0-9]*$'
}

TestWhereTheProgramListensIsTheGroup() {
  use_ipv4
  start_receiver multicast 239.1.2.3
  expect_equal "$host $port" "239.1.2.3 $shared_port"
  kill "${receivers[0]}"
}

TestAnAddressThatIsNoGroupEndsWith3() {
  use_ipv4
  run multicast 10.7.7.1 "$shared_port" </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" '^velsock-cat: cannot join 10\.7\.7\.1 port [0-9]+: Invalid argument \(10022 SOCKET_ERR_INVAL\)$'
}

TestAGroupThatDoesNotResolveEndsWith2() {
  use_ipv4
  run multicast name.invalid "$shared_port" </dev/null
  expect_equal "$status" 2
  expect_match "$(cat err)" '^velsock-cat: cannot join name\.invalid port [0-9]+: .* \(110[0-9]+ SOCKET_ERR_[A-Z_]+\)$'
}

TestAGroupWithoutAnInterfaceForItEndsWith3() {
  enter_own_network '127.0.0.1 velsock-ipv4'
  run multicast 239.1.2.3 9 </dev/null
  expect_equal "$status" 3
  expect_match "$(cat err)" '^velsock-cat: cannot join 239\.1\.2\.3 port 9: Cannot assign requested address \(10049 SOCKET_ERR_ADDRNOTAVAIL\)$'
}

"$test"

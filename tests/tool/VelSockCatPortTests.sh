#!/usr/bin/env bash
# velsock-cat's test of ports, and how it looks names up.
# shellcheck source=VelSockCat.sh
source "$(dirname "${BASH_SOURCE[0]}")/VelSockCat.sh"

# Ports of a network of its own are nobody else's.
use_own_ports() {
  enter_own_network '127.0.0.1 localhost velsock-host'
}

start_open_port() {
  "$velsock_cat" -4 --keep discard "$1" 2>says &
  peer=$!
  until [ -s says ]; do :; done
}

TestOpenPortsAreNamed() {
  use_own_ports
  start_open_port 7003
  run -z localhost 7001-7005,7003
  expect_equal "$status $(cat err)" "0 "
  expect_equal "$(cat out)" $'localhost port 7003 is open\nlocalhost port 7003 is open'
  run -v -z localhost 7002-7003 7004
  expect_equal "$status" 0
  expect_equal "$(cat out)" $'localhost port 7002 is closed\nlocalhost port 7003 is open\nlocalhost port 7004 is closed'
}

TestWithoutAnOpenPortItFailsAsTheFirst() {
  use_own_ports
  run -z localhost 7001-7100
  expect_equal "$status $(cat out)" "3 "
  expect_equal "$(cat err)" "velsock-cat: cannot connect to localhost port 7001: Connection refused (10061 SOCKET_ERR_CONNREFUSED)"
}

TestPortsAreJsonObjects() {
  use_own_ports
  start_open_port 7003
  run --json ports 127.0.0.1 7002-7003
  expect_equal "$status $(wc -l <out)" "0 2"
  expect_match "$(sed -n 1p out)" '^\{"host":"127\.0\.0\.1","port":7002,"open":false,"text":"cannot connect .*","code":10061\}$'
  expect_match "$(sed -n 2p out)" '^\{"host":"127\.0\.0\.1","port":7003,"open":true,"address":"127\.0\.0\.1","secondsToConnect":[0-9.]+\}$'
}

TestSilentPortsCostTheirTimeOnce() {
  use_own_ports
  lay_wire
  ip_command address add 10.7.7.1/24 dev wire
  ip_command neighbour add 10.7.7.9 lladdr 02:00:00:00:00:09 dev wire
  local begin=$SECONDS
  run -w 0.5 -z 10.7.7.9 7001-7016
  expect_equal "$status" 5
  [ $((SECONDS - begin)) -lt 8 ] || fail "it took $((SECONDS - begin)) seconds"
}

# A name server that is silent, and what it was asked: a line for each question.
use_silent_name_server() {
  use_own_ports
  echo 'hosts: dns' >nsswitch.conf
  printf '%s\n' 'nameserver 127.0.0.1' "options timeout:$1 attempts:1" >resolv.conf
  mount --bind resolv.conf /etc/resolv.conf
  "$velsock_cat" -4 --from udp-listen 127.0.0.1 53 >questions.out 2>questions &
  peer=$!
  until [ -s questions ]; do :; done
}

# One question for each IP version.
TestANameThatFailsIsAskedForOnce() {
  use_silent_name_server 1
  run --xt -4 connect name.example. 80 </dev/null
  expect_equal "$status $(wc -l <err)" "2 1"
  expect_match "$(cat err)" '^velsock-cat: cannot connect to name\.example\. port 80: .*\(1100[12] SOCKET_ERR_'
  expect_equal "$(grep -c 'bytes from' questions)" 2
}

TestTheTimeForConnectingLimitsTheLookUp() {
  use_silent_name_server 20
  local family begin=$SECONDS
  for family in -4 --classic; do
    run "$family" -w 0.3 connect name.example. 80 </dev/null
    expect_equal "$status $(wc -l <err)" "5 1"
  done
  [ $((SECONDS - begin)) -lt 15 ] || fail "it took $((SECONDS - begin)) seconds"
}

"$test"

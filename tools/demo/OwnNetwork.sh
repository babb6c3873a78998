#!/usr/bin/env bash
# The parts of the demo that need a network of their own: IPv6, and multicast.
#
#   OwnNetwork.sh BIN FOLDER      run as root in new namespaces for networks, mounts and host names
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(realpath "$1")
cd "$2"
# shellcheck source=Processes.sh
source "$here/Processes.sh"

# The network is new: all of its ports are free.
port=7000

ip_command() {
  if command -v ip >/dev/null; then ip "$@"; else busybox ip "$@"; fi
}

# name_this_computer NAME ADDRESS: extended sockets speak that address's IP version from then on.
name_this_computer() {
  echo "$2 $1" >hosts
  mount --bind hosts /etc/hosts
  mount --bind nsswitch.conf /etc/nsswitch.conf
  if command -v hostname >/dev/null; then hostname "$1"; else busybox hostname "$1"; fi
  [ "$(getent ahosts "$1" | awk '{ print $1; exit }')" = "$2" ]
}

set_up() {
  echo 'hosts: files' >nsswitch.conf
  ip_command link set lo up
}

show_ipv6() {
  title "A connection over IPv6"
  if ! grep -qs '^0\{31\}1 ' /proc/net/if_inet6; then
    echo "Not shown: this system has no IPv6."
    return
  fi
  if ! name_this_computer velsock-ipv6 ::1; then
    echo "Not shown: this system does not let the demo give this computer an IPv6 name."
    return
  fi
  launch "$cat_program" --trace connection --send-only listen "$port" < <(echo 'Hello from ::1') ||
    fail "the server did not start"
  "$cat_program" --trace connection,packet --receive-only connect ::1 "$port" >greeting 2>client.log </dev/null ||
    fail "the client failed"
  await_server || fail "the server failed"
  echo "listening on $host port $port"
  sed 's/^/client: /' client.log
  sed 's/^/server: /' server.log
  [ "$host" = ::1 ] || fail "the server listens on $host"
  [ "$(cat greeting)" = 'Hello from ::1' ] || fail "the greeting has changed on its way"
  echo "The greeting arrived: $(cat greeting)"
  show_other_version
}

show_other_version() {
  local status=0
  "$cat_program" connect 127.0.0.1 "$port" </dev/null 2>other.log || status=$?
  sed 's/^/An IPv4 address on an IPv6 socket: /' other.log
  [ "$status" = 3 ] || fail "the exit code is $status"
}

# start_receiver NAME OPTION... COMMAND...: its output goes to received.NAME.
start_receiver() {
  local name=$1
  shift
  launch "$cat_program" "$@" "$port" </dev/null >"received.$name" || fail "the receiver $name did not start"
  receivers+=("$server")
  others+=("$server")
}

# The broadcast comes last and ends every receiver, so that what did not arrive before it never did.
show_multicast() {
  title "A multicast datagram to the group 239.1.2.3"
  if ! name_this_computer velsock-ipv4 127.0.0.1 || ! ip_command route add default dev lo; then
    echo "Not shown: this system does not let the demo set up a network for it."
    return
  fi
  receivers=()
  start_receiver joined --count 2 multicast 239.1.2.3
  start_receiver elsewhere --count 2 multicast 239.1.2.4
  start_receiver nowhere --count 1 --reuse udp-listen 0.0.0.0
  echo 'to 239.1.2.3' | "$cat_program" udp-send 239.1.2.3 "$port" || fail "the sender failed"
  echo 'to 239.1.2.4' | "$cat_program" udp-send 239.1.2.4 "$port" || fail "the sender failed"
  echo 'to all' | "$cat_program" broadcast "$port" || fail "the sender failed"
  local receiver
  for receiver in "${receivers[@]}"; do
    wait "$receiver" || fail "a receiver failed"
  done
  expect_received joined 'to 239.1.2.3' "which joined 239.1.2.3"
  expect_received elsewhere 'to 239.1.2.4' "which joined 239.1.2.4"
  expect_received nowhere '' "which joined no group"
}

expect_received() {
  local expected=$2$'\nto all'
  echo "the process $3 received: $(paste -s -d ',' "received.$1")"
  [ "$(cat "received.$1")" = "${expected#$'\n'}" ] || fail "that is wrong"
}

set_up
show_ipv6
show_multicast

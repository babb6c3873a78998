#!/usr/bin/env bash
# Runs one test on a network of its own: hosts with addresses, names and resolver settings, on one
# wire.
#
#   Network.sh AGENT SCRIPT TEST
#
# The test runs in namespaces of its own for network, mounts, processes and host name. Nothing of
# the machine is touched, and what the test leaves behind ends with its first process. Where that
# cannot be had the test is skipped, with 77 for exit code.
set -euo pipefail

skip() {
  echo "skipped: $1" >&2
  exit 77
}

fail() {
  local frame=0
  echo "$1" >&2
  while caller $((frame++)) >&2; do :; done
  exit 1
}

# --- The world of the test

enter_world() {
  local command options
  export PATH="$PATH:/usr/sbin:/sbin"
  for command in unshare nsenter taskset ip ss nft dnsmasq socat ncat; do
    command -v "$command" >/dev/null || skip "$command is not installed"
  done
  # Who is not root may be so in a namespace.
  for options in "" "--user --map-root-user"; do
    # shellcheck disable=SC2086  # a list of options
    if unshare $options "${namespaces[@]}" true 2>/dev/null; then
      # On one processor, so that what is sent first comes first.
      exec unshare $options "${namespaces[@]}" \
        taskset --cpu-list "$(first_processor)" "$0" --inside "$@"
    fi
  done
  skip "namespaces cannot be made here"
}

namespaces=(--net --mount --pid --uts --ipc --fork --kill-child --mount-proc)

first_processor() {
  sed -n 's/^Cpus_allowed_list:\s*\([0-9]*\).*/\1/p' /proc/self/status
}

# Where the hosts keep their files. The same mount hides what answers for the machine's names.
world=/run/network

run_test() {
  local folder
  folder=$(dirname "$0")
  mount -t tmpfs tmpfs /run
  mkdir "$world"
  lay_wire
  # shellcheck source=Agents.sh
  source "$folder/Agents.sh" "$1"
  # shellcheck source=Failures.sh
  source "$folder/Failures.sh"
  # shellcheck source=/dev/null
  source "$2"
  "$3"
  dismiss_agents
}

lay_wire() {
  make_network 2>"$world/reason" || skip "no network here: $(<"$world/reason")"
  echo 1 >/proc/sys/net/ipv6/conf/wire/disable_ipv6
  ip link set wire up
}

# All that the tests need of the kernel; what is not the wire is left where it hurts nobody.
make_network() {
  ls /proc/sys/net/ipv6 >/dev/null &&
    ip link add wire type bridge mcast_snooping 0 &&
    ip link add probe type veth peer name peer &&
    nft -f - <<<'table inet probe {
      chain input {
        type filter hook input priority 0
        tcp dport 1 reject with tcp reset
        udp dport 1 reject with icmpx admin-prohibited
        numgen inc mod 2 0 drop
      }
    }'
}

# --- Hosts

declare -A holder=() ipv4=() ipv6=()

# add_host NAME [without-ipv6]: NAME has ${ipv4[NAME]} and ${ipv6[NAME]} on its interface eth0, and
# an /etc of its own, which lies in $world/NAME. It knows no names but localhost.
add_host() {
  local name=$1 number=$((${#holder[@]} + 1))
  ipv4[$name]=192.0.2.$number
  ipv6[$name]=2001:db8::$number
  furnish_etc "$world/$name"
  hold_namespaces "$name"
  plug_in "$name"
  in_host "$name" bash -euc "$set_up_host" set_up "${2-with-ipv6}" "${ipv4[$name]}" "${ipv6[$name]}"
}

local_names=('127.0.0.1 localhost' '::1 localhost')

furnish_etc() {
  mkdir "$1"
  [ ! -e /etc/ld.so.cache ] || cp /etc/ld.so.cache "$1"
  echo 'hosts: files dns' >"$1/nsswitch.conf"
  echo 'root:x:0:0::/:/bin/sh' >"$1/passwd"
  echo 'root:x:0:' >"$1/group"
  printf '%s\n' "${local_names[@]}" >"$1/hosts"
}

# A process that keeps the host's namespaces.
hold_namespaces() {
  mkfifo "$world/$1.ready"
  # shellcheck disable=SC2016  # expanded inside
  unshare --net --mount --uts bash -euc '
    mount --bind "$1" /etc
    hostname "$2"
    echo ready
    exec sleep infinity' hold "$world/$1" "$1" >"$world/$1.ready" &
  holder[$1]=$!
  read -r <"$world/$1.ready" || fail "$1 has no namespaces"
}

plug_in() {
  ip link add "$1" type veth peer name eth0 netns "${holder[$1]}"
  ip link set "$1" master wire up
}

# Addresses are there at once, and unreachable hosts are told of each time.
# shellcheck disable=SC2016  # expanded inside
set_up_host='
  for scope in all default; do
    if [ "$1" = without-ipv6 ]; then
      echo 1 >/proc/sys/net/ipv6/conf/$scope/disable_ipv6
    else
      echo 0 >/proc/sys/net/ipv6/conf/$scope/accept_dad
      echo 0 >/proc/sys/net/ipv6/conf/$scope/accept_ra
      echo 0 >/proc/sys/net/ipv6/conf/$scope/router_solicitations
    fi
  done
  echo 0 >/proc/sys/net/ipv6/conf/eth0/accept_dad 2>/dev/null || true
  echo 0 >/proc/sys/net/ipv4/icmp_ratelimit
  echo 0 >/proc/sys/net/ipv6/icmp/ratelimit
  ip link set lo up
  ip link set eth0 up
  ip address add "$2/24" dev eth0
  [ "$1" = without-ipv6 ] || ip address add "$3/64" dev eth0 nodad'

# in_host NAME COMMAND...
in_host() {
  (become_host "$@")
}

# The same in the shell's place, so that what runs in the background is the command itself.
become_host() {
  exec nsenter --target "${holder[$1]}" --net --mount --uts "${@:2}"
}

# add_address HOST ADDRESS/LENGTH, of IPv4
add_address() {
  in_host "$1" ip address add "$2" dev eth0
}

# The number of the host's interface, as scopes have it.
link_of() {
  in_host "$1" ip -o link show eth0 | cut -d: -f1
}

# --- Trouble

# The wire is pulled out of the host, and put in again.
cut_link() {
  ip link set "$1" down
}
mend_link() {
  ip link set "$1" up
}

# filter HOST [RULE]: what the host does with the packets that come in, as nft has it.
filter() {
  filter_at input "$@"
}

# output_filter HOST [RULE]: the same with those that it sends.
output_filter() {
  filter_at output "$@"
}

filter_at() {
  in_host "$2" nft -f - <<<"
    table inet trouble-$1
    delete table inet trouble-$1
    table inet trouble-$1 {
      chain trouble {
        type filter hook $1 priority 0
        ${3-}
      }
    }"
}

# route_through HOST ROUTER: what is not on the wire goes to the router, which passes it on.
route_through() {
  in_host "$2" bash -euc '
    echo 1 >/proc/sys/net/ipv4/ip_forward
    echo 1 >/proc/sys/net/ipv6/conf/all/forwarding'
  in_host "$1" ip route add default via "${ipv4[$2]}"
  in_host "$1" ip route add default via "${ipv6[$2]}"
}

# A host that is on the wire and does not answer is given up soon.
hurry_neighbours() {
  # shellcheck disable=SC2016  # expanded inside
  in_host "$1" bash -euc '
    for family in ipv4 ipv6; do
      echo 20 >/proc/sys/net/$family/neigh/eth0/retrans_time_ms
    done'
}

# await_count HOST COUNTER: until the kernel's counter is not 0.
await_count() {
  until [[ $(in_host "$1" nstat -asz "$2") =~ $2\ +[1-9] ]]; do
    still_waiting "$1 still has no $2"
  done
}

# --- Names

# know_names HOST LINE...: the lines of the host's table, besides localhost.
know_names() {
  printf '%s\n' "${local_names[@]}" "${@:2}" >"$world/$1/hosts"
}

# with_names HOST OPTION...: the host asks a name server that knows what the options of dnsmasq say,
# and that there are no other names in its domain test.
with_names() {
  add_host names
  start names dnsmasq --no-daemon --conf-file=/dev/null --user=root --pid-file= --no-resolv \
    --no-hosts --no-round-robin --local=/test/ "${@:2}" 2>"$world/names.log"
  await_port names udp 53
  await_port names tcp 53
  use_names "$1" "nameserver ${ipv4[names]}" "options timeout:1 attempts:1"
}

# with_failing_names HOST: the host asks a name server that answers each question with its failure.
with_failing_names() {
  add_host names
  # A question that is marked as answered, with the number of the failure.
  cat >"$world/fail" <<'SCRIPT'
    head -c 2
    printf '\201\202'
    head -c 2 >/dev/null
    cat
SCRIPT
  start names socat UDP4-RECVFROM:53,fork \
    SYSTEM:"bash $world/fail | dd bs=512 iflag=fullblock status=none" 2>"$world/names.log"
  await_port names udp 53
  use_names "$1" "nameserver ${ipv4[names]}" "options timeout:1 attempts:1"
}

# use_names HOST LINE...: the lines of the host's resolv.conf.
use_names() {
  printf '%s\n' "${@:2}" >"$world/$1/resolv.conf"
}

# --- Programs

# start HOST COMMAND...: in the background.
start() {
  become_host "$@" &
}

# Waits for somebody to have the port: await_port HOST tcp|udp PORT
await_port() {
  local options="-Hln${2:0:1}"
  until [ -n "$(in_host "$1" ss "$options" "sport = :$3")" ]; do
    still_waiting "$1 has nobody at $2 port $3"
  done
}

# One look every 20 ms, for half a minute at most.
looks=0
still_waiting() {
  [ $((++looks)) -lt 1500 ] || fail "$1"
  sleep 0.02
}

if [ "$1" = --inside ]; then
  run_test "${@:2}"
else
  enter_world "$@"
fi

# shellcheck shell=bash disable=SC2154  # Network.sh has the hosts
# What the scripts of this folder share: a client's host alpha, a server's host beta, and gamma with a relay that is
# written with the library between them.
#
# VELSOCK_PEERS=whole asks for all that ./run peers does; otherwise there is a short cut of it.

programs=$(dirname "$agent")

# size SHORT WHOLE
size() {
  if [ "${VELSOCK_PEERS-short}" = whole ]; then echo "$2"; else echo "$1"; fi
}

# needs PROGRAM...
needs() {
  local program
  for program in "$@"; do
    command -v "$program" >/dev/null || skip "$program is not installed"
  done
}

# counted NUMBER WHAT: for the totals.
counted() {
  echo "counted $1 $2"
}

with_three_hosts() {
  add_host alpha
  add_host beta
  add_host gamma
  make_no_promises
}

# The listener's backlog of two is soon full. With cookies, the kernel promises more connections than there is room for,
# and resets those that come too late; without, their clients ask again.
make_no_promises() {
  in_host gamma bash -c 'echo 0 >/proc/sys/net/ipv4/tcp_syncookies'
}

# The address of a host, by family, and as a part of an URL.
address_of() {
  local -n addresses_of_family=$2
  echo "${addresses_of_family[$1]}"
}
url_host_of() {
  if [ "$2" = ipv6 ]; then echo "[${ipv6[$1]}]"; else echo "${ipv4[$1]}"; fi
}

# for_each_family COMMAND...: the short cut has one of them.
for_each_family() {
  local family
  for family in $(size "${short_family-ipv6}" "ipv4 ipv6"); do
    "$@" "$family"
  done
}

# start_relay stream|datagram ipv4|ipv6 PORT: from gamma's port 7000 to beta's PORT.
start_relay() {
  rm -f "$world/relay.hears"
  mkfifo "$world/relay.hears"
  become_host gamma "$programs/peer_$1_relay" "$2" 7000 "$(address_of beta "$2")" "$3" \
    <"$world/relay.hears" >"$world/relay.says" 2>"$world/relay.log" &
  relay=$!
  exec {relay_hears}>"$world/relay.hears"
  if [ "$1" = stream ]; then await_port gamma tcp 7000; else await_port gamma udp 7000; fi
}

# What it says of itself is left in relayed.
end_relay() {
  echo end >&"$relay_hears"
  exec {relay_hears}>&-
  wait "$relay" || fail "the relay failed: $(tail -n 5 "$world/relay.log")"
  relayed=$(<"$world/relay.says")
  [[ $relayed != *surprises* || $relayed = *" 0 surprises"* ]] || fail "$relayed: $(tail -n 5 "$world/relay.log")"
}

# relayed_number WHAT
relayed_number() {
  [[ $relayed =~ ([0-9]+)\ $1 ]] || fail "the relay says nothing of $1: $relayed"
  echo "${BASH_REMATCH[1]}"
}

# on HOST COMMAND...: what it says is left in said, and it must not fail.
on() {
  said=$(in_host "$@" 2>&1) || fail "${*:2} failed: $said"
}

# random_file NAME BYTES: in $world
random_file() {
  head -c "$2" /dev/urandom >"$world/$1"
}

# shellcheck shell=bash disable=SC2154  # Network.sh and Agents.sh have the hosts
# The library beside programs that are not ours: socat and ncat, as servers and as clients.
#
# alpha is the library's host, beta the program's. What the program takes and gives goes over its
# standard input and output.

# --- The program

# start_peer COMMAND...
start_peer() {
  rm -f "$world/peer.hears" "$world/peer.says"
  mkfifo "$world/peer.hears" "$world/peer.says"
  become_host beta "$@" <"$world/peer.hears" >"$world/peer.says" 2>"$world/peer.log" &
  peer=$!
  exec {peer_hears}>"$world/peer.hears" {peer_says}<"$world/peer.says"
}

peer_sends() {
  printf %s "$1" >&"$peer_hears"
}

peer_receives() {
  local text
  IFS= read -r -t 60 -N ${#1} text <&"$peer_says" || true
  [ "$text" = "$1" ] || fail "the peer received '$text' and not '$1': $(<"$world/peer.log")"
}

peer_ends_sending() {
  exec {peer_hears}>&-
}

# It ends of itself when both sides have ended the connection.
await_peer() {
  wait "$peer" || fail "the peer failed: $(<"$world/peer.log")"
  exec {peer_says}<&-
}

# Datagrams have no end.
stop_peer() {
  kill "$peer"
  wait "$peer" || true
  exec {peer_hears}>&- {peer_says}<&-
}

start_server() { # socat|ncat tcp|udp ipv4|ipv6
  case $1-$2 in
    socat-*) start_peer socat - "${2^^}${3#ipv}-LISTEN:7000" ;;
    ncat-tcp) start_peer ncat "-${3#ipv}" -l 7000 ;;
    ncat-udp) start_peer ncat "-${3#ipv}" -u -l 7000 ;;
  esac
  await_port beta "$2" 7000
}

start_client() { # socat|ncat tcp|udp ipv4|ipv6
  local -n targets=$3
  local host=${targets[alpha]}
  case $1-$2-$3 in
    socat-*-ipv4) start_peer socat - "${2^^}4:$host:7000" ;;
    socat-*-ipv6) start_peer socat - "${2^^}6:[$host]:7000" ;;
    ncat-tcp-*) start_peer ncat "$host" 7000 ;;
    ncat-udp-*) start_peer ncat -u "$host" 7000 ;;
  esac
}

# --- Connections

# One text there, one back: exchange_with_peer SOCKET
exchange_with_peer() {
  expect alpha "send $1 question" "ok 8"
  peer_receives question
  peer_sends answer
  expect alpha "receive $1" "ok answer"
}

# The library ends the connection: connect_to_server socat|ncat ipv4|ipv6
connect_to_server() {
  local -n targets=$2
  start_server "$1" tcp "$2"
  make_socket alpha client stream "$2"
  expect alpha "connect client ${targets[beta]} 7000" ok
  exchange_with_peer client
  expect alpha "close client" ok
  peer_ends_sending
  await_peer
}

# The program ends the connection: accept_client socat|ncat ipv4|ipv6
accept_client() {
  local -n sources=$2
  listen_on alpha server "$2" 7000
  start_client "$1" tcp "$2"
  ask alpha "accept server peer"
  [[ $answer = "ok ${sources[beta]} "* ]] || fail "accepted '$answer'"
  exchange_with_peer peer
  peer_ends_sending
  expect alpha "receive peer" "$(receive_found_end "" "")"
  expect alpha "close peer" ok
  expect alpha "close server" ok
  await_peer
}

with_hosts() {
  add_host alpha
  add_host beta
}

TestSocatTakesConnections() {
  with_hosts
  connect_to_server socat ipv4
  connect_to_server socat ipv6
}

TestNcatTakesConnections() {
  with_hosts
  connect_to_server ncat ipv4
  connect_to_server ncat ipv6
}

TestSocatConnects() {
  with_hosts
  accept_client socat ipv4
  accept_client socat ipv6
}

TestNcatConnects() {
  with_hosts
  accept_client ncat ipv4
  accept_client ncat ipv6
}

# --- Classic sockets

TestSocatTakesAClassicConnection() {
  with_hosts
  start_server socat tcp ipv4
  expect alpha "create client classic-stream" "ok ipv4"
  expect alpha "connect client ${ipv4[beta]} 7000" ok
  exchange_with_peer client
  expect alpha "close client" ok
  peer_ends_sending
  await_peer
}

TestNcatConnectsToAClassicSocket() {
  with_hosts
  expect alpha "create server classic-stream" "ok ipv4"
  expect alpha "bind server 0.0.0.0 7000" ok
  expect alpha "listen server" ok
  start_client ncat tcp ipv4
  ask alpha "accept server peer"
  [[ $answer = "ok ${ipv4[beta]} "* ]] || fail "accepted '$answer'"
  exchange_with_peer peer
  expect alpha "close peer" ok
  peer_ends_sending
  await_peer
}

# --- Datagrams

# send_to_server socat|ncat ipv4|ipv6
send_to_server() {
  local -n targets=$2
  start_server "$1" udp "$2"
  bound_socket alpha socket datagram "$2" 7001
  expect alpha "send-to socket ${targets[beta]} 7000 question" "ok 8"
  peer_receives question
  peer_sends answer
  expect alpha "receive-from socket" "ok answer ${targets[beta]} 7000"
  stop_peer
}

# receive_from_client socat|ncat ipv4|ipv6
receive_from_client() {
  local -n sources=$2
  bound_socket alpha socket datagram "$2" 7000
  start_client "$1" udp "$2"
  peer_sends question
  ask alpha "receive-from socket"
  [[ $answer = "ok question ${sources[beta]} "* ]] || fail "received '$answer'"
  expect alpha "send-to socket ${answer#ok question } answer" "ok 6"
  peer_receives answer
  stop_peer
  expect alpha "close socket" ok
}

TestSocatTakesDatagrams() {
  with_hosts
  send_to_server socat ipv4
  send_to_server socat ipv6
}

TestNcatTakesDatagrams() {
  with_hosts
  send_to_server ncat ipv4
  send_to_server ncat ipv6
}

TestSocatSendsDatagrams() {
  with_hosts
  receive_from_client socat ipv4
  receive_from_client socat ipv6
}

TestNcatSendsDatagrams() {
  with_hosts
  receive_from_client ncat ipv4
  receive_from_client ncat ipv6
}

# --- A program in between, from one family to the other

# send_through_relay COMMAND...: of beta, from its port 7000 to gamma's.
send_through_relay() {
  listen_on gamma server ipv6 7000
  start beta "$@"
  await_port beta tcp 7000
  make_socket alpha client stream ipv4
  expect alpha "connect client ${ipv4[beta]} 7000" ok
  ask gamma "accept server peer"
  [[ $answer = "ok ${ipv6[beta]} "* ]] || fail "accepted '$answer'"
  tell alpha "send-up-to client 5000000"
  expect gamma "receive-up-to peer 5000000" ok
  expect_later alpha ok
  tell gamma "send-up-to peer 5000000"
  expect alpha "receive-up-to client 5000000" ok
  expect_later gamma ok
  expect alpha "close client" ok
  expect gamma "receive peer" "$(receive_found_end "" "")"
}

TestATransferThroughARelayOfSocatArrivesWhole() {
  with_hosts
  add_host gamma
  send_through_relay socat TCP4-LISTEN:7000 "TCP6:[${ipv6[gamma]}]:7000"
}

TestATransferThroughARelayOfNcatArrivesWhole() {
  with_hosts
  add_host gamma
  send_through_relay ncat -4 -l 7000 --sh-exec "ncat ${ipv6[gamma]} 7000"
}

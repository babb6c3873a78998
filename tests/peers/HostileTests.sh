# shellcheck shell=bash disable=SC2154  # Network.sh and Peers.sh have the hosts
# Peers that do what nobody wants: the relay, which serves them and others at the same time, loses nothing of the others.
# shellcheck source=Peers.sh
source "$(dirname "${BASH_SOURCE[0]}")/Peers.sh"

# What comes is sent back: serve_echo FAMILY [OPTION-OF-SOCAT...]
serve_echo() {
  local echo=EXEC:cat,nofork
  [ $# = 1 ] || echo=PIPE
  start beta socat "${@:2}" "TCP${1#ipv}-LISTEN:9000,fork,reuseaddr,backlog=128" "$echo" 2>"$world/echo.log"
  echo_server=$!
  await_port beta tcp 9000
  start_relay stream "$1" 9000
}

stop_echo() {
  end_relay
  kill "$echo_server"
  wait "$echo_server" || true
}

# through_relay FAMILY COMMAND-OF-SOCAT...: ends with the relay's address
through_relay() {
  in_host alpha socat "${@:2}" "TCP:$(url_host_of gamma "$1"):7000${options-}"
}

# It ends its sending and reads on: be_good FAMILY BYTES [OPTION-OF-SOCAT...]
be_good() {
  random_file good "$2"
  through_relay "$1" "${@:3}" -t 60 - <"$world/good" >"$world/returned" || fail "a good client failed"
  cmp "$world/good" "$world/returned" || fail "what came back differs"
  counted 1 cases
  counted $((2 * $2)) bytes
}

descriptors() {
  find "/proc/$relay/fd" -mindepth 1 | wc -l
}

await_descriptors() {
  until [ "$(descriptors)" = "$1" ]; do
    still_waiting "the relay has $(descriptors) descriptors, not $1"
  done
}

# --- One byte at a time

send_byte_by_byte() {
  serve_echo "$1" -b 1
  options=,nodelay be_good "$1" "$(size 3000 50000)" -b 1
  stop_echo
}

TestBytesThatComeOneByOneArriveWhole() {
  with_three_hosts
  for_each_family send_byte_by_byte
}

# --- Half closes

end_sending_first() {
  local client
  serve_echo "$1"
  for ((client = 0; client < $(size 1 20); client++)); do
    be_good "$1" 300000
  done
  stop_echo
  [ "$relayed" = "$client connections, 0 refused, 0 lost, 0 surprises, $((client * 300000)) bytes of questions, \
$((client * 300000)) bytes of answers" ] || fail "$relayed"
}

TestAClientThatHasEndedItsSendingGetsItsWholeAnswer() {
  with_three_hosts
  for_each_family end_sending_first
}

# --- Resets

# The last of the connection is a reset, without an end before it: each is seen, and no descriptor stays.
reset_often() {
  local client clients before
  clients=$(size 10 300)
  serve_echo "$1"
  before=$(descriptors)
  random_file bytes 20000
  for ((client = 0; client < clients; client++)); do
    options=,linger=0,shut-close through_relay "$1" -u "OPEN:$world/bytes"
  done
  counted "$clients" cases
  await_descriptors "$before"
  be_good "$1" 1000000
  stop_echo
  [ "$(relayed_number connections)" = $((clients + 1)) ] || fail "$relayed"
  [ "$(relayed_number lost)" = "$clients" ] || fail "$relayed"
}

TestResetsEndTheirOwnConnectionsAlone() {
  with_three_hosts
  for_each_family reset_often
}

# --- Clients that never read

# never_read FAMILY: holds a connection to a server that has much to say.
never_read() {
  become_host alpha ncat "$(address_of gamma "$1")" 7000 --recv-only 2>/dev/null > >(exec sleep 300) &
  idlers+=($!)
}

# While they stand in the way, others are served; and the relay ends though its threads wait for them.
ignore_answers() {
  local idlers=() count
  start beta socat -u OPEN:/dev/zero "TCP${1#ipv}-LISTEN:9000,fork,reuseaddr,backlog=128" 2>"$world/zeros.log"
  local zeros=$!
  await_port beta tcp 9000
  start_relay stream "$1" 9000
  for ((count = 0; count < $(size 5 40); count++)); do never_read "$1"; done
  [ "$(in_host alpha ncat "$(address_of gamma "$1")" 7000 --recv-only 2>/dev/null | head -c 5000000 | wc -c)" = 5000000 ] ||
    fail "a good client did not get its bytes"
  counted $((count + 1)) cases
  end_relay
  kill "${idlers[@]}" "$zeros" 2>/dev/null || true
  wait "${idlers[@]}" "$zeros" 2>/dev/null || true
}

TestClientsThatNeverReadAreInNobodysWay() {
  with_three_hosts
  for_each_family ignore_answers
}

# --- A server that is not there

refuse_all() {
  local client
  start_relay stream "$1" 9999
  for ((client = 0; client < $(size 3 100); client++)); do
    through_relay "$1" -t 60 - </dev/null >"$world/returned" 2>/dev/null || true
    [ ! -s "$world/returned" ] || fail "somebody answered"
  done
  end_relay
  counted "$client" cases
  [ "$(relayed_number refused)" = "$(relayed_number connections)" ] || fail "$relayed"
}

TestAServerThatIsNotThereIsToldOfAtOnce() {
  with_three_hosts
  for_each_family refuse_all
}

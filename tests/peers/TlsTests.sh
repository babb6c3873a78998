# shellcheck shell=bash disable=SC2154  # Network.sh and Peers.sh have the hosts
# Encrypted connections through the relay: a byte that differs ends them.
# shellcheck source=Peers.sh
source "$(dirname "${BASH_SOURCE[0]}")/Peers.sh"
short_family=ipv4

make_certificate() {
  needs openssl
  with_three_hosts
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=beta -keyout "$world/key" -out "$world/certificate" \
    2>"$world/openssl.log" || fail "no certificate: $(<"$world/openssl.log")"
}

# start_end HOST NAME OPTION...: one end of the connection; what it hears it sends, and what it receives is in NAME.got.
start_end() {
  rm -f "$world/$2.hears"
  mkfifo "$world/$2.hears"
  become_host "$1" openssl "${@:3}" -quiet <"$world/$2.hears" >"$world/$2.got" 2>"$world/$2.log" &
  ends+=($!)
  exec {hears}>"$world/$2.hears"
}

await_size() {
  until [ "$(stat -c %s "$world/$1")" -ge "$2" ]; do
    still_waiting "$1 has only $(stat -c %s "$world/$1") bytes: $(tail -n 3 "$world/${1%.got}.log")"
  done
}

# Both ends send at the same time: exchange FAMILY VERSION BYTES
exchange() {
  local hears ends=() server_hears client_hears
  random_file question "$3"
  random_file answer "$3"
  start_relay stream "$1" 4433
  start_end beta server s_server "-$2" -accept 4433 -key "$world/key" -cert "$world/certificate"
  server_hears=$hears
  await_port beta tcp 4433
  start_end alpha client s_client "-$2" -connect "$(url_host_of gamma "$1"):7000" -CAfile "$world/certificate" \
    -verify_return_error
  client_hears=$hears
  cat "$world/answer" >&"$server_hears" &
  cat "$world/question" >&"$client_hears"
  wait $!
  await_size server.got "$3"
  await_size client.got "$3"
  cmp "$world/question" "$world/server.got" || fail "the question differs"
  cmp "$world/answer" "$world/client.got" || fail "the answer differs"
  end_relay
  exec {server_hears}>&- {client_hears}>&-
  kill "${ends[@]}" 2>/dev/null || true
  wait "${ends[@]}" 2>/dev/null || true
  counted 1 connections
  counted $((2 * $3)) bytes
}

exchange_each_version() {
  local version
  for version in tls1_2 tls1_3; do
    exchange "$1" "$version" "$(size 1000000 20000000)"
  done
}

TestEncryptedConnectionsArriveWhole() {
  make_certificate
  for_each_family exchange_each_version
}

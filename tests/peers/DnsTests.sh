# shellcheck shell=bash disable=SC2154  # Network.sh and Peers.sh have the hosts
# A name server behind a relay of datagrams.
# shellcheck source=Peers.sh
source "$(dirname "${BASH_SOURCE[0]}")/Peers.sh"
short_family=ipv4

serve_names() {
  needs dnsperf
  with_three_hosts
  local number records=()
  for number in {1..50}; do
    records+=("--host-record=host$number.test,198.51.100.$number,2001:db8:1::$number")
    echo "host$number.test A"
    echo "host$number.test AAAA"
  done >"$world/questions"
  start beta dnsmasq --no-daemon --conf-file=/dev/null --user=root --pid-file= --no-resolv --no-hosts \
    --local=/test/ "${records[@]}" 2>"$world/names.log"
  await_port beta udp 53
}

# ask_names FAMILY: each round has 100 questions. A datagram may be lost, but not here.
ask_names() {
  local rounds inet=inet
  rounds=$(size 20 500)
  [ "$1" = ipv4 ] || inet=inet6
  start_relay datagram "$1" 53
  on alpha dnsperf -f "$inet" -s "$(address_of gamma "$1")" -p 7000 -d "$world/questions" -n "$rounds" -c 20 -q 40 -t 20
  local questions=$((rounds * 100))
  [[ $said =~ Queries\ completed:\ *$questions\ \(100.00%\) ]] || fail "$said"
  [[ $said =~ Response\ codes:\ *NOERROR\ $questions\ \(100.00%\) ]] || fail "$said"
  end_relay
  [ "$relayed" = "20 clients, $questions questions, $questions answers" ] || fail "$relayed"
  counted "$questions" datagrams
  counted "$questions" requests
}

TestQuestionsAreAllAnswered() {
  serve_names
  for_each_family ask_names
}

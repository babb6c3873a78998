# shellcheck shell=bash disable=SC2154  # Network.sh and Peers.sh have the hosts
# A Redis server behind the relay.
# shellcheck source=Peers.sh
source "$(dirname "${BASH_SOURCE[0]}")/Peers.sh"

serve_redis() {
  needs redis-server redis-benchmark
  with_three_hosts
  start beta redis-server --port 6379 --save '' --appendonly no --dir "$world" --protected-mode no \
    --bind "${ipv4[beta]}" "${ipv6[beta]}" >"$world/redis.log" 2>&1
  await_port beta tcp 6379
}

# benchmark FAMILY REQUESTS PIPELINE: of each command.
benchmark() {
  local tests=set,get,incr,lpush,lrange_100,mset command
  on alpha timeout 300 redis-benchmark -h "$(address_of gamma "$1")" -p 7000 -n "$2" -c 20 -P "$3" -d 500 -t "$tests" --csv
  for command in SET GET INCR LPUSH LRANGE_100 MSET; do
    [[ $said =~ \"${command}[^\"]*\",\"[0-9.]+\" ]] || fail "$command did not end: $said"
    counted "$2" requests
  done
  [[ $said != *rror* ]] || fail "$said"
}

store_values() {
  on alpha "$programs/peer_redis_load" "$1" "$(address_of gamma "$1")" 7000 "$2"
  [[ $said =~ ^$((4 * $2))\ values\ of\ ([0-9]+)\ bytes$ ]] || fail "$said"
  counted $((8 * $2)) requests
}

pass_requests() {
  start_relay stream "$1" 6379
  benchmark "$1" "$(size 200 20000)" 1
  benchmark "$1" "$(size 1000 20000)" 16
  store_values "$1" "$(size 20 500)"
  end_relay
  counted "$(relayed_number connections)" connections
  counted $(($(relayed_number 'bytes of questions') + $(relayed_number 'bytes of answers'))) bytes
}

TestValuesArriveWhole() {
  serve_redis
  for_each_family pass_requests
}

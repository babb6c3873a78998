# shellcheck shell=bash disable=SC2154  # Network.sh and Agents.sh have the hosts
# The example that is a Redis client, beside the real server.
#
# alpha is the client's host, beta the server's.

serve_redis() {
  command -v redis-server >/dev/null || skip "redis-server is not installed"
  add_host alpha
  add_host beta
  become_host beta redis-server --port 6379 --save '' --appendonly no --dir "$world" --protected-mode no \
    --bind "${ipv4[beta]}" "${ipv6[beta]}" >"$world/redis.log" 2>&1 &
  await_port beta tcp 6379
}

# expect_redis HOST ANSWER WORD...
expect_redis() {
  local answer
  answer=$(in_host alpha "$(dirname "$agent")/example-redis-client" "$1" 6379 "${@:3}") || fail "it ended by $?"
  [ "$answer" = "$2" ] || fail "${*:3}: expected '$2' but saw '$answer'"
}

TestTheExampleSpeaksWithARealServer() {
  serve_redis
  local host=${ipv6[beta]}
  expect_redis "$host" PONG PING
  expect_redis "$host" OK SET colour 'light green'
  expect_redis "$host" 'light green' GET colour
  expect_redis "$host" '(nil)' GET shape
  expect_redis "$host" 2 APPEND size 12
  expect_redis "$host" $'12\nlight green\n(nil)' MGET size colour shape
  expect_redis "$host" "$(printf 'x%.0s' {1..100000})" ECHO "$(printf 'x%.0s' {1..100000})"
  local answer
  answer=$(in_host alpha "$(dirname "$agent")/example-redis-client" "$host" 6379 NONSENSE)
  [[ $answer = "-ERR unknown command"* ]] || fail "a wrong command: $answer"
}

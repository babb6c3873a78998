# shellcheck shell=bash disable=SC2154  # Network.sh has the hosts
# The library on the hosts: an agent on each that is told something, and answers line by line.
#
#   Agents.sh AGENT

agent=$1

declare -A agent_process=() agent_hears=() agent_says=()

# tell HOST COMMAND: without waiting for the answer.
tell() {
  [ -n "${agent_process[$1]-}" ] || start_agent "$1"
  echo "$2" >&"${agent_hears[$1]}" || fail "the agent of $1 is gone"
}

start_agent() {
  local hears says
  mkfifo "$world/$1.hears" "$world/$1.says"
  become_host "$1" "$agent" <"$world/$1.hears" >"$world/$1.says" &
  agent_process[$1]=$!
  exec {hears}>"$world/$1.hears" {says}<"$world/$1.says"
  agent_hears[$1]=$hears
  agent_says[$1]=$says
}

# The answer to the last command is left in answer.
patience=60
hear() {
  IFS= read -r -t "$patience" answer <&"${agent_says[$1]}" || fail "$1 does not answer"
}

# ask HOST COMMAND
ask() {
  tell "$1" "$2"
  hear "$1"
}

# expect HOST COMMAND ANSWER: the whole answer.
expect() {
  ask "$1" "$2"
  [ "$answer" = "$3" ] || fail "$1: $2: expected '$3' but heard '$answer'"
}

# expect_later HOST ANSWER: to a command that was told before.
expect_later() {
  hear "$1"
  [ "$answer" = "$2" ] || fail "$1: expected '$2' but heard '$answer'"
}

# expect_records HOST RECORD...: all records since the last time.
expect_records() {
  local expected
  printf -v expected ' | %s' "${@:2}"
  expect "$1" records "ok${expected# |}"
}

# make_socket HOST NAME stream|datagram ipv4|ipv6: an extended socket is made for the family of the
# own name, so the host's table gets that.
make_socket() {
  local -n addresses=$4
  know_names "$1" "${addresses[$1]} $1"
  expect "$1" "create $2 $3" "ok $4"
}

# bound_socket HOST NAME stream|datagram ipv4|ipv6 PORT
bound_socket() {
  make_socket "${@:1:4}"
  expect "$1" "bind $2 [any] $5" ok
}

# listen_on HOST NAME ipv4|ipv6 PORT
listen_on() {
  bound_socket "$1" "$2" stream "$3" "$4"
  expect "$1" "listen $2" ok
}

# A connection from socket client on the one host to socket peer on the other: connect_hosts HOST
# HOST ipv4|ipv6
connect_hosts() {
  local -n targets=$3
  listen_on "$2" server "$3" 7000
  make_socket "$1" client stream "$3"
  expect "$1" "connect client ${targets[$2]} 7000" ok
  ask "$2" "accept server peer"
  [[ $answer = "ok ${targets[$1]} "* ]] || fail "$2 accepted '$answer'"
}

# An agent that ends in disorder has found something that the test did not ask for.
dismiss_agents() {
  local name status
  for name in "${!agent_process[@]}"; do
    tell "$name" end
    status=0
    wait "${agent_process[$name]}" || status=$?
    [ "$status" = 0 ] || fail "the agent of $name ended with $status"
    rm "$world/$name.hears" "$world/$name.says"
  done
  agent_process=()
}

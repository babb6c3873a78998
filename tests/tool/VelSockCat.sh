# What the scripts that test velsock-cat have in common; they source it before anything else. Their words are
#   VELSOCK_CAT [SOCKETS] TEST
# SOCKETS is classic, xt, or ipv6 for extended sockets on a computer whose name is an IPv6 one.
# shellcheck shell=bash
# The sourcing script reads what is set here.
# shellcheck disable=SC2034
set -euo pipefail

script=$(realpath "${BASH_SOURCE[1]}")
program=$(realpath "$1")
script_arguments=("$program" "${@:2}")
velsock_cat=$program
sockets=${2-}
test=${!#}
# shellcheck source=Tool.sh
source "$(dirname "$script")/Tool.sh"

# Enters the network that the kind of sockets needs, and sets family to their option.
set_up() {
  if [ "$sockets" = ipv6 ]; then enter_own_network '::1 velsock-ipv6' '127.0.0.1 localhost' '::1 localhost'; fi
  family=--xt
  if [ "$sockets" = classic ]; then family=--classic; fi
}

# start COMMAND WORD...: the program in the background on a free port.
start() {
  launch "$velsock_cat" "$@" || fail "nothing was announced"
}

# start_listening OPTION... <INPUT
start_listening() {
  start "$family" "$@" listen 0
}

# An independent peer on descriptor 3.
connect_plainly() {
  exec 3<>"/dev/tcp/$host/$port"
}

# expect_echoes_on_two_connections TEXT...: both are served at once, by turns.
expect_echoes_on_two_connections() {
  exec 3<>"/dev/tcp/$host/$port" 4<>"/dev/tcp/$host/$port"
  local text
  for text in "$@"; do
    echo "$text" >&4
    echo "$text" >&3
    read -r -u 3 -t 30 answer
    expect_equal "$answer" "$text"
    read -r -u 4 -t 30 answer
    expect_equal "$answer" "$text"
  done
}

make_file() {
  head -c 3000001 /dev/urandom >file
}

# Bash's zero timeout only asks whether there is something to read.
wait_until_received() {
  until read -r -t 0 -u "$1"; do :; done
}

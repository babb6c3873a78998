# What the scripts that test velsock-cat's connections have in common; they source it after Tool.sh.
# shellcheck shell=bash
# velsock_cat and sockets are the sourcing script's, which reads what is set here.
# shellcheck disable=SC2034,SC2154

set_up() {
  if [ "$sockets" = ipv6 ]; then enter_own_network '::1 velsock-ipv6' '127.0.0.1 localhost' '::1 localhost'; fi
  if [ "$sockets" = classic ]; then
    family=--classic
  else
    family=--xt
  fi
}

# start_listening OPTION... <INPUT: the program in the background on a free port.
start_listening() {
  launch "$velsock_cat" "$family" "$@" listen 0 || fail "nothing was announced"
}

# An independent peer on descriptor 3.
connect_plainly() {
  exec 3<>"/dev/tcp/$host/$port"
}

make_file() {
  head -c 3000001 /dev/urandom >file
}

# Bash's zero timeout only asks whether there is something to read.
wait_until_received() {
  until read -r -t 0 -u "$1"; do :; done
}

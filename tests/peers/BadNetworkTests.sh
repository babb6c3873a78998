# shellcheck shell=bash disable=SC2154  # Network.sh and Peers.sh have the hosts
# Transfers over networks that lose, refuse, slow down or cut up what is sent: they arrive whole, or fail with what the
# headers say, and not later than their time limits. Each byte is compared with what belongs in its place.
# shellcheck source=Peers.sh
source "$(dirname "${BASH_SOURCE[0]}")/Peers.sh"

# The kernel waits twice as long after each loss: nine in a row take more than a minute.
limit=110000
# shellcheck disable=SC2034  # Agents.sh waits so long
patience=150

# Packets are as they are on a wire, so that a rule about one is not about many at once.
with_wire() {
  add_host alpha
  add_host beta
  local host
  for host in alpha beta; do
    in_host "$host" ip link set eth0 gso_max_segs 1
    ip link set "$host" gso_max_segs 1
  done
}

# connect_with_limits FAMILY MILLISECONDS: for each call at both ends
connect_with_limits() {
  filter alpha
  filter beta
  connect_hosts alpha beta "$1"
  expect alpha "timeouts client $2" ok
  expect beta "timeouts peer $2" ok
}

close_connection() {
  expect alpha "close client" ok
  expect beta "receive peer" "$(receive_found_end "" "")"
  close_server
}

close_server() {
  expect beta "close peer" ok
  expect beta "close server" ok
  counted 1 cases
}

# send_there BYTES; send_back BYTES: up to that place of the stream
send_there() {
  tell alpha "send-up-to client $1"
  expect beta "receive-up-to peer $1" ok
  expect_later alpha ok
  counted "$1" bytes
}
send_back() {
  tell beta "send-up-to peer $1"
  expect alpha "receive-up-to client $1" ok
  expect_later beta ok
  counted "$1" bytes
}

# pass_bytes PREPARATION BYTES FAMILY: the network is good while they connect.
pass_bytes() {
  connect_with_limits "$3" "$limit"
  $1
  send_there "$2"
  send_back "$2"
  close_connection
}

# --- Loss

# lose_packets PERCENT: in both directions
lose_packets() {
  filter alpha "tcp sport 7000 numgen random mod 100 < $1 drop"
  filter beta "tcp dport 7000 numgen random mod 100 < $1 drop"
}

TestATransferArrivesWholeWhenOneInAHundredIsLost() {
  with_wire
  for_each_family pass_bytes "lose_packets 1" "$(size 500000 10000000)"
}

TestATransferArrivesWholeWhenFiveInAHundredAreLost() {
  with_wire
  for_each_family pass_bytes "lose_packets 5" "$(size 100000 5000000)"
}

TestATransferArrivesWholeWhenTwentyInAHundredAreLost() {
  with_wire
  for_each_family pass_bytes "lose_packets 20" "$(size 10000 300000)"
}

# --- Slow, and in small pieces

# slow_down BYTES-IN-A-SECOND: what comes faster is dropped.
slow_down() {
  filter alpha "tcp sport 7000 limit rate over $1 bytes/second burst 30000 bytes drop"
  filter beta "tcp dport 7000 limit rate over $1 bytes/second burst 30000 bytes drop"
}

TestATransferArrivesWholeAtALimitedRate() {
  with_wire
  for_each_family pass_bytes "slow_down 2000000" "$(size 500000 10000000)"
}

# narrow_wire BYTES: the largest packet of both hosts
narrow_wire() {
  in_host alpha ip link set eth0 mtu "$1"
  in_host beta ip link set eth0 mtu "$1"
}

TestATransferArrivesWholeInSmallPackets() {
  with_wire
  for_each_family pass_bytes "narrow_wire 1280" "$(size 1000000 10000000)"
  pass_bytes "narrow_wire 576" "$(size 500000 5000000)" ipv4
  pass_bytes "narrow_wire 68" "$(size 20000 1000000)" ipv4
}

lose_small_packets() {
  narrow_wire 1280
  lose_packets 5
  in_host alpha nft add rule inet trouble-input trouble limit rate over 1000000 bytes/second drop
}

TestATransferArrivesWholeInSpiteOfAllThatTogether() {
  with_wire
  for_each_family pass_bytes lose_small_packets "$(size 50000 2000000)"
}

# --- Cuts

# The link is mended while neither side has given up.
survive_cuts() {
  local cut place
  connect_with_limits "$1" "$limit"
  for ((cut = 1; cut <= $(size 1 10); cut++)); do
    place=$((cut * 1000000))
    tell alpha "send-up-to client $place"
    expect beta "receive-up-to peer $((place - 900000))" ok
    cut_link beta
    tell beta "receive-up-to peer $place"
    sleep 0.2
    mend_link beta
    expect_later beta ok
    expect_later alpha ok
  done
  counted $((cut * 1000000 - 1000000)) bytes
  close_connection
}

TestATransferArrivesWholeOverALinkThatIsCutAndMended() {
  with_wire
  for_each_family survive_cuts
}

# fail_at_cut FAMILY MILLISECONDS: both sides say so when their time is over, and not long after.
fail_at_cut() {
  local begin=$SECONDS
  connect_with_limits "$1" "$2"
  tell alpha "send-up-to client 1000000000"
  expect beta "receive-up-to peer 1000000" ok
  cut_link beta
  expect beta "receive-until-failure peer" "$(receive_failed : : 10060)"
  expect_later alpha "$(send_failed alpha:0 "$(address_of beta "$1"):7000" 10060)"
  [ $((SECONDS - begin)) -lt 30 ] || fail "it took $((SECONDS - begin)) seconds"
  expect alpha "close client" ok
  close_server
  mend_link beta
}

fail_at_cuts() {
  local milliseconds
  for milliseconds in $(size 300 "100 300 1000 3000"); do
    fail_at_cut "$1" "$milliseconds"
  done
}

TestATransferFailsInTimeWhenTheLinkIsCut() {
  with_wire
  for_each_family fail_at_cuts
}

# --- Resets

# reset_after FAMILY BYTES: the sender is told by the filter; the receiver never is, and waits for its time to be over.
reset_after() {
  connect_with_limits "$1" 500
  filter beta "tcp dport 7000 quota over $2 bytes reject with tcp reset"
  tell alpha "send-up-to client 1000000000"
  expect beta "receive-until-failure peer" "$(receive_failed : : 10060)"
  expect_later alpha "$(send_failed alpha:0 "$(address_of beta "$1"):7000" 10054)"
  expect alpha "send-up-to client 2000000000" "$(send_failed alpha:0 "$(address_of beta "$1"):7000" 10054)"
  expect alpha "receive client" "$(receive_failed alpha:0 "$(address_of beta "$1"):7000" 10054)"
  expect alpha "close client" ok
  close_server
}

reset_in_each_phase() {
  local bytes
  for bytes in $(size 100000 "1 1000 10000 100000 1000000 10000000"); do
    reset_after "$1" "$bytes"
  done
}

TestATransferFailsWhenItIsResetOnTheWay() {
  with_wire
  for_each_family reset_in_each_phase
}

# reset_receiver FAMILY: what had come before is lost to the receiver, or it is not; but it is told.
reset_receiver() {
  connect_with_limits "$1" 20000
  send_there 300000
  filter alpha "tcp sport 7000 reject with tcp reset"
  tell beta "receive-until-failure peer"
  tell alpha "send-up-to client 300001"
  hear alpha
  expect_later beta "$(receive_failed : : 10054)"
  expect alpha "close client" ok
  close_server
}

TestAReceiverIsToldOfAResetOnTheWay() {
  with_wire
  for_each_family reset_receiver
}

# --- Datagrams

# How many packets a host's filter has dropped so far.
dropped_at() {
  in_host "$1" nft list chain inet trouble-input trouble | grep -o 'packets [0-9]*' | cut -d' ' -f2
}

# Those for which the receiving socket had no room: overrun FAMILY
overrun() {
  local counter=UdpRcvbufErrors
  [ "$1" = ipv4 ] || counter=Udp6RcvbufErrors
  in_host beta nstat -asz "$counter" | awk -v counter="$counter" '$1 == counter { print $2 }'
}

# lose_datagrams PERCENT FAMILY: what was sent has arrived, each once and whole, or was dropped by those who say so.
lose_datagrams() {
  local count before lost received
  count=$(size 500 20000)
  bound_socket beta receiver datagram "$2" 7000
  bound_socket alpha sender datagram "$2" 7001
  expect beta "timeouts receiver 1000" ok
  filter beta "udp dport 7000 numgen random mod 100 < $1 counter drop"
  before=$(overrun "$2")
  tell beta "receive-datagrams receiver"
  expect alpha "send-datagrams sender $(address_of beta "$2") 7000 $count" ok
  hear beta
  [[ $answer =~ ^ok\ ([0-9]+)$ ]] || fail "beta: $answer"
  received=${BASH_REMATCH[1]}
  lost=$(($(dropped_at beta) + $(overrun "$2") - before))
  [ $((received + lost)) = "$count" ] || fail "$count were sent, $received received and $lost lost"
  [ $((received * lost)) -gt 0 ] || fail "$received were received and $lost lost"
  expect alpha "close sender" ok
  expect beta "close receiver" ok
  counted "$count" datagrams
  counted 1 cases
}

TestDatagramsAreLostByTheNetworkAlone() {
  with_wire
  local percent
  for percent in $(size 20 "1 5 20"); do
    for_each_family lose_datagrams "$percent"
  done
}

# shellcheck shell=bash disable=SC2034  # for the tests
# The failures of the library, as agents answer them.

declare -A error_text=(
  [10013]="Permission denied"
  [10014]="Bad address"
  [10022]="Invalid argument"
  [10035]="Resource temporarily unavailable"
  [10037]="Operation already in progress"
  [10042]="Bad protocol option"
  [10049]="Cannot assign requested address"
  [10051]="Network is unreachable"
  [10052]="Network dropped connection on reset"
  [10053]="Software caused connection abort"
  [10054]="Connection reset by peer"
  [10056]="Socket is already connected"
  [10057]="Socket is not connected"
  [10060]="Connection timed out"
  [10061]="Connection refused"
  [10065]="No route to host"
  [11001]="host not found"
  [11002]="Nonauthoritative host not found"
  [11004]="Valid name, no data record of requested type"
)

# failed NUMBER TEXT: followed by the error's number and text.
failed() {
  echo "failed $1 $2, errno = <$1> ${error_text[$1]}"
}

# --- Extended sockets: OPERATION DESCRIPTION CALL ADDRESSES NUMBER

extended_failed() {
  failed "$5" "VelNet::$1 , $2 , $3 , $4 "
}

# NUMBER: this computer's name has no address.
create_failed() {
  extended_failed CreateSocketXt "cannot create a socket" ::getaddrinfo "" "$1"
}

# HOST TARGET NUMBER
connect_failed() {
  extended_failed SocketXtImpl::Connect "cannot connect local socket to a remote address" \
    ::connect "$1:0 : $2" "$3"
}

# TARGET-HOST PORT NUMBER: its name has no address.
connect_not_resolved() {
  extended_failed SocketXtImpl::Connect "cannot connect local socket to a remote address" \
    ::getaddrinfo "$1 : $2" "$3"
}

# LOCAL REMOTE NUMBER; an accepted socket has ":" for both.
send_failed() {
  extended_failed SocketXtImpl::Send "send on socket failed" ::send "$1 : $2" "$3"
}
receive_failed() {
  extended_failed SocketXtImpl::Receive "recieve on socket failed" ::recv "$1 : $2" "$3"
}

# LOCAL-HOST LOCAL-PORT
receive_found_end() {
  echo "failed -1 VelNet::SocketXtImpl::Receive ," \
    "::recv could not be completed because the connection has been closed , ::recv ," \
    "$1: : $2 , errno = <65535> Unknown error"
}

# TARGET-HOST PORT NUMBER
send_to_failed() {
  extended_failed SocketXtImpl::SendTo "cannot sendto using connectionless socket" ::sendto \
    "$1 : $2" "$3"
}

# NUMBER
receive_from_failed() {
  extended_failed SocketXtImpl::RecvFrom "cannot recvfrom using connectionless socket" ::recvfrom \
    "no-ip : no-port" "$1"
}

# ADD|DROP NUMBER
multicast_failed() {
  extended_failed SocketXtImpl::SetSocketForMulticast "cannot set option for multicast" \
    "::setsockopt(IP_$1_MEMBERSHIP)" "" "$2"
}

# --- Classic sockets and names

# ADDRESS:PORT NUMBER
classic_connect_failed() {
  failed "$2" "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: $1"
}

# NUMBER
classic_send_failed() {
  failed "$1" "VelNet::SocketImpl::Send() - FAIL. The ::send failed"
}
classic_receive_failed() {
  failed "$1" "VelNet::SocketImpl::Receive() - FAIL. The ::recv failed"
}

# NAME NUMBER
resolve_failed() {
  failed "$2" "VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is\
 not resolvable on this machine. Connection = {$1}"
}

# ADDRESS NUMBER
reverse_failed() {
  failed "$2" "VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is not\
 resolvable on this machine. Connection = {$1}"
}

no_name_servers="failed -1 VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP\
 protocol is not configured on this machine. Registry error: NameServer and DhcpNameServer keys are\
 not set up"

#!/usr/bin/env bash
# What the public headers keep a client from doing: each snippet must be refused by the compiler, with the message that
# says why, and its right form must compile.
# usage: CheckRefusals.sh COMPILER INCLUDE_FOLDER...
set -euo pipefail

compiler=$1
shift
command -v "$compiler" >/dev/null || {
  echo "$compiler is not installed"
  exit 77
}
includes=()
for folder in "$@"; do includes+=(-I "$folder"); done
is_clang=$("$compiler" --version | grep -c clang || true)
problems=0
refused=0

headers='#include <VelNet/Address.h>
#include <VelNet/SocketAddressCache.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketXt.h>
using namespace VelNet;
extern Socket& socket;
extern SocketXt& extended;
extern SocketCollection& collection;
extern SocketAddressCache& cache;
extern OctetsCollection& octets;
extern char buffer[8];
extern VelBase::ReturnString text;
Exception Made();
void Use(const void*);'

problem() {
  echo "$1"
  problems=$((problems + 1))
}

compile() {
  printf '%s\nvoid Function() {\n%s\n}\n' "$headers" "$1" |
    "$compiler" -std=c++17 -fsyntax-only -x c++ -Wall -Wextra -Werror "${includes[@]}" - 2>&1
}

# refuses MESSAGE STATEMENT RIGHT_FORM
refuses() {
  local said
  if said=$(compile "$2"); then
    problem "is not refused: $2"
  elif ! grep -qE "$1" <<<"$said"; then
    problem "is refused for another reason than '$1': $2"$'\n'"$said"
  fi
  said=$(compile "$3") || problem "does not compile: $3"$'\n'"$said"
  refused=$((refused + 1))
}

# No enumerator is taken for an address.
deleted='deleted (function|constructor)'
loopback='Octets(127, 0, 0, 1)'
for name in Address::LOOPBACK Address::ANY SPECIAL_LOOPBACK SOCKET_ERR_UNKNOWN; do
  refuses "$deleted" "socket.Bind($name, 80);" "socket.Bind($loopback, 80);"
  refuses "$deleted" "socket.Connect($name, 80);" "socket.Connect($loopback, 80);"
  refuses "$deleted" "octets.Add($name);" "octets.Add($loopback);"
  refuses "$deleted" "cache.GetMachineNameFromOctets($name);" "cache.GetMachineNameFromOctets($loopback);"
  refuses "$deleted" "SocketAddress::GetMachineNameFromOctets($name);" \
    "SocketAddress::GetMachineNameFromOctets($loopback);"
  refuses "$deleted" "SocketAddress address($name, 80);" "SocketAddress address($loopback, 80);"
  refuses "$deleted" "Octets address = $name; Use(&address);" "Octets address = 0x0100007FU; Use(&address);"
done
refuses "$deleted" 'Address address(SPECIAL_LOOPBACK, 80);' 'Address address(Address::LOOPBACK, 80);'

# What an extended socket does not do by Octets.
refuses 'does nothing; bind by host and port' "extended.Bind($loopback, 80);" \
  'extended.Bind(SPECIAL_LOOPBACK, "80");'
refuses 'does nothing; connect by host and port' "extended.Connect($loopback, 80);" \
  'extended.Connect("host", "80");'
refuses 'does nothing; accept with host and port' 'SocketAddress remote; (void)extended.Accept(remote);' \
  'SocketAddress remote; (void)socket.Accept(remote);'
refuses 'is always 0.0.0.0' 'extended.GetLocalAddress();' 'socket.GetLocalAddress();'
refuses 'is always 0.0.0.0' 'extended.GetRemoteAddress();' 'socket.GetRemoteAddress();'

# Results that tell what has been done, or own something.
unused='nodiscard'
refuses "$unused" 'CreateSocketCollection();' 'CreateSocketCollection()->Destroy();'
refuses "$unused" 'CreateOctetsCollection();' 'VelBase::ReturnPtrI<OctetsCollection> list(CreateOctetsCollection());'
refuses "$unused" 'CreateSocketAddressCache();' \
  'VelBase::ReturnPtrI<SocketAddressCache> made(CreateSocketAddressCache());'
refuses "$unused" 'CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);' \
  'auto made = CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);'
refuses "$unused" 'CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);' \
  'auto made = CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);'
refuses "$unused" 'VelBase::ReturnPtrI<Socket> owner(&socket); owner.Take();' \
  'VelBase::ReturnPtrI<Socket> owner(&socket); owner.Take()->Release();'

# g++ forgets that of virtual functions, and does not know what points into a temporary.
if [ "$is_clang" -gt 0 ]; then
  refuses "$unused" 'socket.Send(buffer, 8);' 'if (socket.Send(buffer, 8) < 8) return;'
  refuses "$unused" 'socket.Receive(buffer, 8);' 'if (socket.Receive(buffer, 8) < 8) return;'
  refuses "$unused" 'extended.RecvFrom(buffer, 8, text, text);' '(void)extended.RecvFrom(buffer, 8, text, text);'
  refuses "$unused" 'SocketAddress remote; socket.Accept(remote);' \
    'SocketAddress remote; auto accepted = socket.Accept(remote);'
  refuses "$unused" 'collection.Select(1);' 'if (auto* ready = collection.Select(1)) ready->Destroy();'

  dangling='destroyed at the end of the full-expression'
  refuses "$dangling" "const char* name = $loopback.GetAddressString().c_str(); Use(name);" \
    "Use($loopback.GetAddressString().c_str());"
  refuses "$dangling" 'auto* words = Made().GetMessage(); Use(words);' \
    'auto made = Made(); auto* words = made.GetMessage(); Use(words);'
fi

((problems == 0)) || exit 1
echo "$refused statements are refused by $compiler"

#include "Help.h"

namespace VelSockCat {

const char* HelpText() noexcept {
    return R"(Carries a TCP connection, or datagrams, over standard input and output.

  velsock-cat [OPTION]... connect HOST PORT
  velsock-cat [OPTION]... listen [HOST] PORT          also: -l [HOST] PORT
  velsock-cat [OPTION]... udp-send HOST PORT
  velsock-cat [OPTION]... udp-listen [HOST] PORT
  velsock-cat [OPTION]... broadcast PORT
  velsock-cat [OPTION]... multicast GROUP PORT

  -4, -6               speak IPv4, or IPv6 (else: as this computer's name does)
  --classic            use the classic socket, which speaks IPv4 (else: --xt)
  -N                   end the connection when standard input ends
  -q SECONDS           end so long after standard input, peer or no peer
  --send-only          discard what the peer sends; -N
  --receive-only       leave standard input alone
  -w SECONDS, --connect-timeout MS, --accept-timeout MS
                       give up when nobody is connected by then
  --recv-timeout MS, --send-timeout MS
                       give up when nothing is received, or sent, for so long
  --count N, --size N  end after N datagrams; send at most N bytes in each
  --answers N          then show N answers (0: all that come)
  --from               show each datagram's sender
  --reuse              share the port with others that use this option
  --trace LIST         show records: any of connection,packet,verbose,error
  --log-file PATH      append them to PATH instead of showing them
  -v, --verbose        show each address that is tried, and more of failures
  -h, --help, --version

Port 0 lets the system choose; "listening on HOST port PORT" says where it is.
Without -N and -q it waits for the peer when standard input ends, 5 seconds
without a byte before it ends its direction, and then at most a minute.

It ends with 0 if all went well, 1 wrong usage, 2 name not resolved, 3 cannot
connect or listen, 4 connection lost, 5 too late, 6 local input or output.
)";
}

const char* VersionText() noexcept {
    return "velsock-cat " VELSOCK_TOOL_VERSION "\n";
}

}  // namespace VelSockCat

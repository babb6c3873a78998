#include "Help.h"

namespace VelSockCat {

const char* HelpText() noexcept {
    return R"(Carries a TCP connection, or datagrams, over standard input and output.

Usage:
  velsock-cat [OPTION]... listen [HOST] PORT
  velsock-cat [OPTION]... connect HOST PORT
  velsock-cat [OPTION]... udp-listen [HOST] PORT
  velsock-cat [OPTION]... udp-send HOST PORT
  velsock-cat [OPTION]... broadcast PORT
  velsock-cat [OPTION]... multicast GROUP PORT

listen waits for one connection, on the loopback address when no HOST is given,
and says on standard error where: "listening on HOST port PORT". With --classic,
PORT 0 lets the system choose. connect tries every address of HOST in turn.
Standard input goes to the peer and the peer's bytes go to standard output, both
at once, until the peer closes the connection.

udp-send and broadcast send each read of standard input as one datagram.
udp-listen, and multicast once it has joined GROUP, write what comes to standard
output. To send to a group, udp-send to it.

Sockets:
  --xt                the extended socket (the default). It speaks the IP
                      version of the first address of this computer's name.
  -4, -6              an extended socket of this IP version instead
  --classic           the classic socket, which speaks IPv4

Options of listen and connect:
  --send-only         receive nothing; close when standard input ends
  --receive-only      leave standard input alone

Options of datagrams:
  --count N           end after N datagrams
  --size N            send at most N bytes in a datagram (default 1400); 0 sends
                      empty ones and leaves standard input alone
  --from              show each datagram's sender on standard error

Options:
  --reuse             listen on a port that others use, if they agree
  --recv-timeout MS   give up when nothing is received for MS milliseconds
  --send-timeout MS   give up when nothing can be sent for MS milliseconds
                      (0, which is the default of both, stands for no limit)
  --trace LIST        show records of these kinds on standard error; LIST is one
                      or more of connection,packet,verbose,error
  --log-file PATH     append the records of --trace to PATH instead
  -h, --help          show this text
  --version           show the version
  --                  end of the options

Exit codes:
  0  the exchange ended in order
  1  wrong usage
  2  the name does not resolve
  3  cannot connect, bind, listen or join
  4  the connection was lost during the transfer, or a datagram not taken
  5  a timeout elapsed
  6  local input or output failed

Every failure is told in one line on standard error.
)";
}

const char* VersionText() noexcept {
    return "velsock-cat " VELSOCK_TOOL_VERSION "\n";
}

}  // namespace VelSockCat

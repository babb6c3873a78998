#include "Help.h"

namespace VelSockCat {

const char* HelpText() noexcept {
    return R"(Carries TCP connections, or datagrams, over standard input and output.

  velsock-cat [OPTION]... connect HOST PORT
  velsock-cat [OPTION]... listen [HOST] PORT          also: -l [HOST] PORT
  velsock-cat [OPTION]... udp-send HOST PORT
  velsock-cat [OPTION]... udp-listen [HOST] PORT
  velsock-cat [OPTION]... broadcast PORT
  velsock-cat [OPTION]... multicast GROUP PORT
  velsock-cat [OPTION]... relay [HOST] PORT HOST PORT
  velsock-cat [OPTION]... echo|discard|chargen [HOST] PORT
  velsock-cat [OPTION]... ports HOST PORT...          also: -z HOST 20-25,80
  velsock-cat [--json] explain NUMBER|SYMBOL          also: --explain

  -4, -6             speak IPv4, or IPv6 (else: as this computer's name does)
  --classic          use the classic socket, which speaks IPv4 (else: --xt)
  -k, --keep         go on accepting; -u, --udp  serve, or relay, datagrams
  -N, -q SECONDS     end the connection with standard input, or so long after
  --send-only        discard what the peer sends; -N
  --receive-only     leave standard input alone
  -w SECONDS, --connect-timeout MS, --accept-timeout MS
  --recv-timeout MS, --send-timeout MS
                     give up when nobody is connected, nothing passes by then
  --rate BYTES       send at most so many in a second: 500, 20K, 5M
  --count N, --size N, --answers N, --from
                     datagrams: how many, how large, answers, senders
  --reuse            share the port with others that use this option
  -x, --hex          dump the bytes of both directions; --stats  show totals
  --json             tell what happens as JSON objects, one a line
  --trace LIST       show records: any of connection,packet,verbose,error
  --log-file PATH    append them to PATH; --log TEXT  the text says what, where
  -v, --verbose      show each address that is tried, and more of failures
  -h, --help, --version

It ends with 0 if all went well, 1 wrong usage, 2 name not resolved, 3 cannot
connect or listen, 4 connection lost, 5 too late, 6 local input or output.
)";
}

const char* VersionText() noexcept {
    return "velsock-cat " VELSOCK_TOOL_VERSION "\n";
}

}  // namespace VelSockCat

#include "Help.h"

namespace VelSockCat {

const char* HelpText() noexcept {
    return R"(Carries one TCP connection over standard input and output.

Usage:
  velsock-cat [OPTION]... listen [HOST] PORT
  velsock-cat [OPTION]... connect HOST PORT

listen waits for one connection on HOST (127.0.0.1 when none is given) and says
on standard error where: "listening on 127.0.0.1 port N". PORT 0 lets the system
choose. connect tries every address of HOST in turn.

Standard input goes to the peer and the peer's bytes go to standard output, both
at once, until the peer closes the connection.

Options:
  --send-only         receive nothing; close when standard input ends
  --receive-only      leave standard input alone
  --recv-timeout MS   give up when the peer sends nothing for MS milliseconds
  --send-timeout MS   give up when the peer takes nothing for MS milliseconds
                      (0, which is the default of both, stands for no limit)
  --trace LIST        show records of these kinds on standard error; LIST is one
                      or more of connection,packet,verbose,error
  --log-file PATH     append the records of --trace to PATH instead
  --help              show this text
  --version           show the version
  --                  end of the options

Exit codes:
  0  the exchange ended in order
  1  wrong usage
  2  the name does not resolve
  3  cannot connect, bind or listen
  4  the connection was lost during the transfer
  5  a time-out passed
  6  local input or output failed

Every failure is told in one line on standard error.
)";
}

const char* VersionText() noexcept {
    return "velsock-cat " VELSOCK_CAT_VERSION "\n";
}

}  // namespace VelSockCat

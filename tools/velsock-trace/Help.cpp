#include "Help.h"

namespace VelSockTrace {

const char* HelpText() noexcept {
    return R"(Shows the conversations that the library's log files tell of.

Usage:
  velsock-trace [OPTION]... list FILE...         all conversations
  velsock-trace [OPTION]... show NUMBER FILE...  the transfers of one of them

The files may be those of several programs, a client's and its server's for
instance; what both tell is shown once. With list, - is standard input.

Which conversations:
  --address ADDRESS  with this address, or name, at one of the ends
  --port PORT        with this port at one of the ends
  --from TIME, --to TIME
                     within this time: 2026-11-22T13:01:02, or less of it
  --kind LIST        of these kinds, separated by commas: stream, datagrams,
                     orderly, failed, refused, open, unknown

How:
  -f, --follow       list: wait for more, also in a file that takes its place
  --json             list: one JSON object for each conversation
  --hex              show: the bytes in hexadecimal
  --pcapng FILE      write a capture for network analysers instead
  --html FILE        write a page to look at instead
  -h, --help, --version

Exit codes:
  0  in order, even if lines of the files could not be understood
  1  wrong usage
  6  a file cannot be read or written
  8  there is no such conversation

velsock-trace(1) tells more.
)";
}

const char* VersionText() noexcept {
    return "velsock-trace " VELSOCK_TOOL_VERSION "\n";
}

}  // namespace VelSockTrace

#include "Help.h"

namespace VelSockResolve {

const char* HelpText() noexcept {
    return R"(Shows what the library's resolvers answer.

Usage:
  velsock-resolve [OPTION]... forward [NAME]...     a host's addresses
  velsock-resolve [OPTION]... reverse [ADDRESS]...  the name of an address
  velsock-resolve [OPTION]... dotted [TEXT]...      the address of a dotted text
  velsock-resolve [OPTION]... local-name            this computer's name
  velsock-resolve [OPTION]... local-domain          its DNS domain
  velsock-resolve [OPTION]... name-servers          its DNS servers (IPv4)
  velsock-resolve [OPTION]... ip-version            the IP version it is set to
  velsock-resolve [--json] doctor                   what would fail on it, and why

forward, reverse and dotted without an operand read them from standard input,
one a line; an empty line asks for the empty name. Answers go to standard
output, one a line, and of several questions with the question after a tab.

Options:
  -4, -6      forward: the host's addresses of this IP version (default: IPv4)
  --cache     forward and reverse: ask once for each name or address and
              remember the answer; of a name's addresses, the first alone
  --json      one JSON object for each question, failures included
  --log TEXT  log as the text says: Network/*=on, file:PATH;format=json
  --short     the answers alone, without their questions
  -v, --verbose
              show the library's text of a failure too
  -h, --help  show this text
  --version   show the version
  --          end of the options

Exit codes:
  0  every question was answered
  1  wrong usage
  2  a name or an address does not resolve, or a text is no dotted address
  3  the socket layer does not start
  6  local input or output failed
  7  this computer's settings give no answer, or the doctor found a fault

Every failure is told in one line on standard error. The questions that follow
are asked all the same, and the first failure gives the exit code.
)";
}

const char* VersionText() noexcept {
    return "velsock-resolve " VELSOCK_TOOL_VERSION "\n";
}

}  // namespace VelSockResolve

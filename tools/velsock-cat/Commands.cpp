#include "Commands.h"

#include <algorithm>
#include <array>

#include "Options.h"

namespace VelSockCat {

namespace {

constexpr const char* MaybeHost = "[HOST] PORT";

// clang-format off
constexpr std::array<CommandRow, 12> CommandRows{{
    {"listen",     Command::Listen,    Operands::MaybeHostAndPort, MaybeHost,               true,  true,  Listen},
    {"connect",    Command::Connect,   Operands::HostAndPort,      "HOST PORT",             false, true,  Connect},
    {"udp-send",   Command::UdpSend,   Operands::HostAndPort,      "HOST PORT",             false, true,  SendDatagrams},
    {"udp-listen", Command::UdpListen, Operands::MaybeHostAndPort, MaybeHost,               true,  true,  ReceiveDatagrams},
    {"broadcast",  Command::Broadcast, Operands::Port,             "PORT",                  false, true,  SendDatagrams},
    {"multicast",  Command::Multicast, Operands::HostAndPort,      "GROUP PORT",            false, true,  ReceiveDatagrams},
    {"relay",      Command::Relay,     Operands::TwoEnds,          "[HOST] PORT HOST PORT", true,  true,  Relay},
    {"echo",       Command::Echo,      Operands::MaybeHostAndPort, MaybeHost,               true,  true,  Echo},
    {"discard",    Command::Discard,   Operands::MaybeHostAndPort, MaybeHost,               true,  true,  Discard},
    {"chargen",    Command::Chargen,   Operands::MaybeHostAndPort, MaybeHost,               true,  true,  Chargen},
    {"ports",      Command::Ports,     Operands::HostAndPorts,     "HOST PORT...",          false, true,  TestPorts},
    {"explain",    Command::Explain,   Operands::Error,            "NUMBER|SYMBOL",         false, false, Explain},
}};
// clang-format on

}  // namespace

const CommandRow& RowOf(const std::string& name) {
    const auto* const row = std::find_if(CommandRows.begin(), CommandRows.end(),
                                         [&](const CommandRow& each) { return each.name == name; });
    if (row == CommandRows.end()) Refuse("unknown command '" + name + "'");
    return *row;
}

const CommandRow& RowOf(Command command) {
    return *std::find_if(CommandRows.begin(), CommandRows.end(),
                         [&](const CommandRow& each) { return each.command == command; });
}

}  // namespace VelSockCat

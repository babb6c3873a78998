#include "Commands.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "NameCommands.h"
#include "SocketCommands.h"
#include "TransferCommands.h"
#include "posix/HandleCommands.h"

namespace Network {

namespace {

struct Command {
    const char* name;
    std::size_t arguments;
    Words (*carryOut)(Host& host, const Words& words);
};

constexpr Command Commands[] = {
    {"create", 2, Create},
    {"bind", 3, Bind},
    {"listen", 1, Listen},
    {"accept", 2, Accept},
    {"connect", 3, Connect},
    {"close", 1, Close},
    {"timeouts", 2, SetTimeouts},
    {"non-blocking", 1, SetNonBlocking},
    {"reports", 1, AskForReports},
    {"broadcast", 1, SetBroadcast},
    {"multicast", 3, SetMulticast},
    {"select", 3, Select},
    {"send", 2, Send},
    {"receive", 1, Receive},
    {"send-to", 4, SendTo},
    {"receive-from", 1, ReceiveFrom},
    {"send-datagrams", 4, SendDatagrams},
    {"receive-datagrams", 1, ReceiveDatagrams},
    {"send-up-to", 2, SendUpTo},
    {"receive-up-to", 2, ReceiveUpTo},
    {"receive-until-failure", 1, ReceiveUntilFailure},
    {"resolve", 1, Resolve},
    {"reverse", 1, Reverse},
    {"local-name", 0, LocalName},
    {"domain", 0, Domain},
    {"name-servers", 0, NameServers},
    {"records", 0, TakeRecords},
};

}  // namespace

Words CarryOut(Host& host, const Words& words) {
    const auto* const command =
        std::find_if(std::begin(Commands), std::end(Commands), [&](const Command& each) {
            return !words.empty() && words[0] == each.name && words.size() == each.arguments + 1;
        });
    if (command == std::end(Commands)) throw std::runtime_error("there is no such command");
    return command->carryOut(host, words);
}

}  // namespace Network

#include "Arguments.h"

#include <algorithm>
#include <array>
#include <utility>

#include "CommandLine.h"
#include "Options.h"

namespace VelSockCat {

namespace {

// A command and its operands: a port, and before it a host that is required, optional, or not
// allowed.
enum class Host { None, Optional, Needed };

struct CommandRow {
    const char* name;
    Command command;
    Host host;
    bool systemMayChoosePort;
    const char* operands;
};

constexpr std::array<CommandRow, 6> CommandRows{{
    {"listen", Command::Listen, Host::Optional, true, "[HOST] PORT"},
    {"connect", Command::Connect, Host::Needed, false, "HOST PORT"},
    {"udp-send", Command::UdpSend, Host::Needed, false, "HOST PORT"},
    {"udp-listen", Command::UdpListen, Host::Optional, true, "[HOST] PORT"},
    {"broadcast", Command::Broadcast, Host::None, false, "PORT"},
    {"multicast", Command::Multicast, Host::Needed, false, "GROUP PORT"},
}};

const CommandRow& RowOf(const std::string& name) {
    const auto* const row = std::find_if(CommandRows.begin(), CommandRows.end(),
                                         [&](const CommandRow& each) { return each.name == name; });
    if (row == CommandRows.end()) Refuse("unknown command '" + name + "'");
    return *row;
}

bool IsRightNumber(const CommandRow& row, std::size_t operands) {
    const std::size_t least = row.host == Host::Needed ? 2 : 1;
    const std::size_t most = row.host == Host::None ? 1 : 2;
    return least <= operands && operands <= most;
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& words) : line_("velsock-cat", words) {}

    Arguments Parse() {
        while (const auto item = line_.Next()) {
            if (item->isOption) {
                TakeOption(item->text);
            } else {
                operands_.push_back(item->text);
            }
        }
        if (!isInformation_) TakeCommand();
        return std::move(arguments_);
    }

private:
    void TakeOption(const std::string& name) {
        if (name == "--help" || name == "-h") return TakeInformation(Command::Help);
        if (name == "--version") return TakeInformation(Command::Version);
        if (name == "--listen" || name == "-l") return TakeListen();
        const Option* const option = FindOption(name);
        if (option == nullptr) Refuse("unknown option '" + name + "'");
        option->take(arguments_, option->hasValue ? line_.Value() : std::string());
        options_.emplace_back(option, name);
    }

    // The option stands for the command of that name.
    void TakeListen() {
        if (!listens_) operands_.insert(operands_.begin(), "listen");
        listens_ = true;
    }

    void TakeInformation(Command command) {
        arguments_.command = command;
        isInformation_ = true;
    }

    void TakeCommand() {
        if (operands_.empty()) Refuse("no command was given");
        const CommandRow& row = RowOf(operands_.front());
        arguments_.command = row.command;
        CheckOptions(row);
        TakeOperands(row);
    }

    void CheckOptions(const CommandRow& row) const {
        for (const auto& [option, name] : options_) {
            if (!option->BelongsTo(row.command)) {
                Refuse("'" + name + "' does not go with " + row.name);
            }
        }
        if (arguments_.logFile && arguments_.categories.empty()) {
            Refuse("'--log-file' needs '--trace'");
        }
        if (arguments_.datagramSize == 0 && !arguments_.datagramCount) {
            Refuse("'--size 0' needs '--count'");
        }
        CheckAnswers(row);
        CheckEnding();
        if (arguments_.Family() == SocketFamily::Classic) CheckClassic(row);
    }

    void CheckAnswers(const CommandRow& row) const {
        const bool sends = row.command == Command::UdpSend || row.command == Command::Broadcast;
        if (!sends || arguments_.answers) return;
        if (arguments_.receiveTimeout) Refuse("'--recv-timeout' needs '--answers'");
        if (arguments_.showSenders) Refuse("'--from' needs '--answers'");
    }

    void CheckEnding() const {
        if (arguments_.direction != Direction::ReceiveOnly) return;
        if (arguments_.endsWithInput) Refuse("'-N' and '--receive-only' exclude each other");
        if (arguments_.quitAfter) Refuse("'-q' and '--receive-only' exclude each other");
    }

    void CheckClassic(const CommandRow& row) const {
        const bool oneToMany =
            row.command == Command::Broadcast || row.command == Command::Multicast;
        if (oneToMany) Refuse(std::string(row.name) + " needs an extended socket");
        if (arguments_.showSenders) Refuse("'--from' needs an extended socket");
        if (arguments_.version == VelNet::SocketXt::FAMILY_IPV6) {
            Refuse("'-6' needs an extended socket");
        }
    }

    void TakeOperands(const CommandRow& row) {
        operands_.erase(operands_.begin());
        if (!IsRightNumber(row, operands_.size())) {
            Refuse(std::string(row.name) + " takes " + row.operands);
        }
        if (operands_.size() == 2) TakeHost(operands_.front());
        const bool streams = row.command == Command::Listen || row.command == Command::Connect;
        arguments_.port = ParsePort(operands_.back(), !streams);
        if (arguments_.port == 0 && !row.systemMayChoosePort) {
            Refuse(std::string(row.name) + " needs a port from 1");
        }
    }

    void TakeHost(const std::string& host) {
        if (host.empty()) Refuse("the host is empty");
        arguments_.host = host;
    }

    VelSockTools::CommandLine line_;
    std::vector<std::string> operands_;
    std::vector<std::pair<const Option*, std::string>> options_;  // by the names that were given
    bool listens_ = false;
    bool isInformation_ = false;
    Arguments arguments_;
};

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words) {
    return Parser(words).Parse();
}

}  // namespace VelSockCat

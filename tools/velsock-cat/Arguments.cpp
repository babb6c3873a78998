#include "Arguments.h"

#include <algorithm>
#include <array>
#include <utility>

#include "CommandLine.h"
#include "Commands.h"
#include "Operands.h"
#include "Options.h"

namespace VelSockCat {

namespace {

// Options that stand for the command of that name.
struct StandIn {
    const char* name;
    const char* letter;
    const char* command;
};

constexpr std::array<StandIn, 3> StandIns{
    {{"--listen", "-l", "listen"}, {"", "-z", "ports"}, {"--explain", "", "explain"}}};

const StandIn* FindStandIn(const std::string& name) {
    const auto* const found =
        std::find_if(StandIns.begin(), StandIns.end(),
                     [&](const StandIn& each) { return name == each.name || name == each.letter; });
    return found == StandIns.end() ? nullptr : found;
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& words) : line_("velsock-cat", words) {}

    Arguments Parse() {
        const auto operands = line_.TakeAll([this](const std::string& name) { TakeOption(name); });
        operands_.insert(operands_.end(), operands.begin(), operands.end());
        if (!isInformation_) TakeCommand();
        return std::move(arguments_);
    }

private:
    void TakeOption(const std::string& name) {
        if (name == "--help" || name == "-h") return TakeInformation(Command::Help);
        if (name == "--version") return TakeInformation(Command::Version);
        if (const StandIn* const standIn = FindStandIn(name)) return TakeStandIn(*standIn);
        const Option* const option = FindOption(name);
        if (option == nullptr) Refuse("unknown option '" + name + "'");
        option->take(arguments_, option->hasValue ? line_.Value() : std::string());
        options_.emplace_back(option, name);
    }

    void TakeStandIn(const StandIn& standIn) {
        if (standIn_ == &standIn) return;
        if (standIn_ != nullptr) Refuse("only one command can be given");
        standIn_ = &standIn;
        operands_.emplace_back(standIn.command);
        if (line_.HasValue()) operands_.push_back(line_.Value());
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
        TakeOperands(arguments_, row, {operands_.begin() + 1, operands_.end()});
    }

    void CheckOptions(const CommandRow& row) const {
        for (const auto& [option, name] : options_) {
            if (!option->BelongsTo(row.command)) {
                Refuse("'" + name + "' does not go with " + row.name);
            }
        }
        if (arguments_.log && (arguments_.logFile || !arguments_.categories.empty())) {
            Refuse("'--log' does not go with '--trace' and '--log-file'");
        }
        if (arguments_.logFile && arguments_.categories.empty()) {
            Refuse("'--log-file' needs '--trace'");
        }
        if (arguments_.datagramSize == 0 && !arguments_.datagramCount) {
            Refuse("'--size 0' needs '--count'");
        }
        CheckAnswers(row);
        CheckEnding();
        CheckService(row);
        if (arguments_.Family() == SocketFamily::Classic) CheckClassic(row);
    }

    void CheckAnswers(const CommandRow& row) const {
        const bool sends = row.command == Command::UdpSend || row.command == Command::Broadcast;
        if (!sends || arguments_.answers) return;
        if (arguments_.receiveTimeout) Refuse("'--recv-timeout' needs '--answers'");
        if (arguments_.showSenders) Refuse("'--from' needs '--answers'");
    }

    void CheckEnding() const {
        const bool sends = arguments_.direction == Direction::SendOnly ||
                           arguments_.endsWithInput || arguments_.quitAfter;
        if (arguments_.keepsAccepting && sends) Refuse("with '--keep' standard input is not read");
        if (arguments_.direction != Direction::ReceiveOnly) return;
        if (arguments_.endsWithInput) Refuse("'-N' and '--receive-only' exclude each other");
        if (arguments_.quitAfter) Refuse("'-q' and '--receive-only' exclude each other");
    }

    void CheckService(const CommandRow& row) const {
        const bool serves = row.command == Command::Echo || row.command == Command::Discard ||
                            row.command == Command::Chargen;
        if (serves && !arguments_.usesDatagrams && arguments_.datagramCount)
            Refuse("'--count' needs '-u'");
        if (row.command == Command::Relay && !arguments_.usesDatagrams && arguments_.receiveTimeout)
            Refuse("'--recv-timeout' needs '-u'");
        if (!arguments_.usesDatagrams) return;
        if (arguments_.keepsAccepting) Refuse("datagrams need no '--keep'");
        if (arguments_.acceptTimeout) Refuse("'--accept-timeout' does not go with '-u'");
    }

    void CheckClassic(const CommandRow& row) const {
        const bool needsExtended = row.command == Command::Broadcast ||
                                   row.command == Command::Multicast ||
                                   row.command == Command::Relay || row.command == Command::Ports;
        if (needsExtended) Refuse(std::string(row.name) + " needs an extended socket");
        if (arguments_.usesDatagrams) Refuse("'-u' needs an extended socket");
        if (arguments_.showSenders) Refuse("'--from' needs an extended socket");
        if (arguments_.version == VelNet::SocketXt::FAMILY_IPV6) {
            Refuse("'-6' needs an extended socket");
        }
    }

    VelSockTools::CommandLine line_;
    std::vector<std::string> operands_;
    std::vector<std::pair<const Option*, std::string>> options_;  // by the names that were given
    const StandIn* standIn_ = nullptr;
    bool isInformation_ = false;
    Arguments arguments_;
};

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words) {
    return Parser(words).Parse();
}

}  // namespace VelSockCat

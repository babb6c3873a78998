#include "Arguments.h"

#include "CommandLine.h"

namespace VelSockResolve {

namespace {

using VelNet::SocketXt;

[[noreturn]] void Refuse(const std::string& text) {
    VelSockTools::RefuseUsage("velsock-resolve", text);
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& words) : line_("velsock-resolve", words) {}

    Arguments Parse() {
        const auto operands =
            line_.TakeAll([this](const std::string& option) { TakeOption(option); });
        if (arguments_.command != Command::Answer) return std::move(arguments_);
        for (const std::string& operand : operands)
            TakeOperand(operand);
        if (arguments_.command == Command::Answer) CheckQuestion();
        if (arguments_.command == Command::Doctor) CheckDoctor();
        return std::move(arguments_);
    }

private:
    void TakeOperand(const std::string& word) {
        if (arguments_.command == Command::Doctor) Refuse("doctor takes no operand");
        if (arguments_.question == nullptr && word == "doctor") return TakeDoctor();
        if (arguments_.question == nullptr) return TakeQuestion(word);
        arguments_.operands.push_back(word);
    }

    void TakeOption(const std::string& option) {
        if (option == "--help" || option == "-h") {
            arguments_.command = Command::Help;
        } else if (option == "--version") {
            arguments_.command = Command::Version;
        } else if (option == "--cache") {
            arguments_.cache = true;
        } else if (option == "--json") {
            arguments_.json = true;
        } else if (option == "--short") {
            arguments_.answersAlone = true;
        } else if (option == "--log") {
            arguments_.log = line_.Value();
        } else if (option == "--verbose" || option == "-v") {
            arguments_.verbose = true;
        } else if (option == "--ipv4" || option == "-4") {
            TakeVersion(SocketXt::FAMILY_IPV4);
        } else if (option == "--ipv6" || option == "-6") {
            TakeVersion(SocketXt::FAMILY_IPV6);
        } else {
            Refuse("unknown option '" + option + "'");
        }
    }

    void TakeDoctor() { arguments_.command = Command::Doctor; }

    void TakeVersion(SocketXt::ADDR_FAMILY version) {
        if (arguments_.version.value_or(version) != version) {
            Refuse("'-4' and '-6' exclude each other");
        }
        arguments_.version = version;
    }

    void TakeQuestion(const std::string& name) {
        arguments_.question = FindQuestion(name);
        if (arguments_.question == nullptr) Refuse("unknown question '" + name + "'");
    }

    void CheckDoctor() const {
        if (arguments_.cache) Refuse("'--cache' does not go with doctor");
        if (arguments_.version) Refuse("'-4' and '-6' do not go with doctor");
        if (arguments_.answersAlone) Refuse("'--short' does not go with doctor");
    }

    void CheckQuestion() const {
        const Question* const question = arguments_.question;
        if (question == nullptr) Refuse("no question was given");
        if (!question->takesOperands && !arguments_.operands.empty()) {
            Refuse(std::string(question->name) + " takes no operand");
        }
        if (!question->hasCache && arguments_.cache) {
            Refuse(std::string("'--cache' does not go with ") + question->name);
        }
        if (!question->takesOperands && arguments_.answersAlone) {
            Refuse(std::string("'--short' does not go with ") + question->name);
        }
        if (question->askIpv6 == nullptr && arguments_.version) {
            Refuse(std::string("'-4' and '-6' do not go with ") + question->name);
        }
        if (arguments_.cache && arguments_.IsIpv6()) Refuse("the cache knows IPv4 alone");
    }

    VelSockTools::CommandLine line_;
    Arguments arguments_;
};

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words) {
    return Parser(words).Parse();
}

}  // namespace VelSockResolve

#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "CommandLine.h"
#include "TimeText.h"

namespace VelSockTrace {

namespace {

[[noreturn]] void Refuse(const std::string& text) {
    VelSockTools::RefuseUsage("velsock-trace", text);
}

// Returns a number from 1 to the most, or 0 if the text is none.
unsigned int Number(const std::string& text, unsigned int most) noexcept {
    unsigned int number = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number);
    return error == std::errc() && end == last && number <= most ? number : 0;
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& words) : line_("velsock-trace", words) {}

    Arguments Parse() {
        operands_ = line_.TakeAll([this](const std::string& name) { TakeOption(name); });
        if (arguments_.command == Command::List) TakeOperands();
        return std::move(arguments_);
    }

private:
    void TakeOption(const std::string& option) {
        if (option == "--help" || option == "-h") {
            arguments_.command = Command::Help;
        } else if (option == "--version") {
            arguments_.command = Command::Version;
        } else if (option == "--follow" || option == "-f") {
            arguments_.follow = true;
        } else if (option == "--json") {
            arguments_.json = true;
        } else if (option == "--hex") {
            arguments_.hex = true;
        } else if (option == "--pcapng") {
            arguments_.capture = Path(option);
        } else if (option == "--html") {
            arguments_.page = Path(option);
        } else {
            TakeFilter(option);
        }
    }

    void TakeFilter(const std::string& option) {
        Filter& filter = arguments_.filter;
        if (option == "--address") {
            filter.address = Endpoint(line_.Value(), "");
        } else if (option == "--port") {
            filter.port = Port(line_.Value());
        } else if (option == "--from") {
            filter.from = Time(line_.Value());
        } else if (option == "--to") {
            filter.to = Time(line_.Value());
        } else if (option == "--kind") {
            TakeKinds(line_.Value());
        } else {
            Refuse("unknown option '" + option + "'");
        }
    }

    std::string Path(const std::string& option) {
        std::string path = line_.Value();
        if (path.empty()) Refuse("'" + option + "' needs a file");
        return path;
    }

    std::uint16_t Port(const std::string& text) const {
        const unsigned int port = Number(text, 65535);
        if (port == 0) Refuse("'" + text + "' is no port");
        return static_cast<std::uint16_t>(port);
    }

    std::int64_t Time(const std::string& text) const {
        const auto time = ReadTime(text);
        if (!time) Refuse("'" + text + "' is no time such as 2026-11-22T13:01:02");
        return *time;
    }

    void TakeKinds(const std::string& list) {
        for (std::size_t begin = 0; begin <= list.size();) {
            const std::size_t end = std::min(list.find(',', begin), list.size());
            const std::string name = list.substr(begin, end - begin);
            if (!AddKind(arguments_.filter, name)) Refuse("there is no kind '" + name + "'");
            begin = end + 1;
        }
    }

    void TakeOperands() {
        if (operands_.empty()) Refuse("no command was given");
        const std::string command = operands_.front();
        operands_.erase(operands_.begin());
        if (command == "show") {
            TakeNumber();
        } else if (command != "list") {
            Refuse("unknown command '" + command + "'");
        }
        if (operands_.empty()) Refuse("no file was given");
        arguments_.files = std::move(operands_);
        Check();
    }

    void TakeNumber() {
        arguments_.command = Command::Show;
        if (operands_.empty()) Refuse("no conversation was given");
        arguments_.number = Number(operands_.front(), 0xFFFF'FFFF);
        if (arguments_.number == 0) Refuse("'" + operands_.front() + "' is no number");
        operands_.erase(operands_.begin());
    }

    void Check() const {
        const bool isWritten = !arguments_.capture.empty() || !arguments_.page.empty();
        const bool isShown = arguments_.command == Command::Show;
        if (arguments_.hex && !isShown) Refuse("'--hex' goes with show alone");
        if (arguments_.json && (isShown || isWritten)) Refuse("'--json' goes with list alone");
        if (arguments_.follow && (isShown || isWritten)) Refuse("'-f' goes with list alone");
        for (const std::string& file : arguments_.files) {
            if (file == "-" && (isShown || isWritten))
                Refuse("standard input cannot be read twice, so it goes with list alone");
        }
    }

    VelSockTools::CommandLine line_;
    std::vector<std::string> operands_;
    Arguments arguments_;
};

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words) {
    return Parser(words).Parse();
}

}  // namespace VelSockTrace

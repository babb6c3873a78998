#include "Arguments.h"

#include "Failure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>

namespace VelSockCat {

namespace {

[[noreturn]] void Refuse(const std::string& text) {
    throw Failure(ExitCode::WrongUsage, text + "; see velsock-cat --help");
}

// All of the text must be decimal digits that make a number up to the limit: no sign, no blank, no
// rest.
unsigned int ParseNumber(const std::string& text, unsigned int limit, const std::string& what) {
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || number > limit) {
        Refuse("'" + text + "' is not a " + what + " (a number up to " + std::to_string(limit) +
               ")");
    }
    return number;
}

unsigned short ParsePort(const std::string& text) {
    constexpr unsigned int highest = std::numeric_limits<unsigned short>::max();
    return static_cast<unsigned short>(ParseNumber(text, highest, "port"));
}

unsigned int ParseMilliseconds(const std::string& text) {
    return ParseNumber(text, std::numeric_limits<unsigned int>::max(), "number of milliseconds");
}

std::string CategoryOf(const std::string& name) {
    struct Row {
        std::string_view name;
        std::string_view category;
    };
    static constexpr std::array<Row, 4> rows{{{"connection", "Connection Trace"},
                                              {"packet", "Packet Trace"},
                                              {"verbose", "Verbose Packet Trace"},
                                              {"error", "Error"}}};
    const auto* const row =
        std::find_if(rows.begin(), rows.end(), [&](const Row& each) { return each.name == name; });
    if (row == rows.end()) {
        Refuse("'" + name + "' is none of connection, packet, verbose, error");
    }
    return std::string(row->category);
}

std::vector<std::string> ParseCategories(const std::string& list) {
    std::vector<std::string> categories;
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        categories.push_back(CategoryOf(list.substr(begin, end - begin)));
        begin = end + 1;
    }
    return categories;
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& words) : words_(words) {}

    Arguments Parse() {
        while (next_ < words_.size())
            TakeWord(words_[next_++]);
        if (!isInformation_) TakeOperands();
        return std::move(arguments_);
    }

private:
    void TakeWord(const std::string& word) {
        if (optionsEnded_ || word.size() < 2 || word.front() != '-') {
            operands_.push_back(word);
        } else if (word == "--") {
            optionsEnded_ = true;
        } else {
            TakeOption(word);
        }
    }

    void TakeOption(const std::string& option) {
        if (option == "--help") return TakeInformation(Command::Help);
        if (option == "--version") return TakeInformation(Command::Version);
        if (option == "--send-only") return TakeDirection(Direction::SendOnly);
        if (option == "--receive-only") return TakeDirection(Direction::ReceiveOnly);
        TakeOptionWithValue(option);
    }

    void TakeOptionWithValue(const std::string& option) {
        if (option == "--trace") {
            arguments_.categories = ParseCategories(ValueOf(option));
        } else if (option == "--log-file") {
            arguments_.logFile = ValueOf(option);
        } else if (option == "--recv-timeout") {
            arguments_.receiveTimeout = ParseMilliseconds(ValueOf(option));
        } else if (option == "--send-timeout") {
            arguments_.sendTimeout = ParseMilliseconds(ValueOf(option));
        } else {
            Refuse("unknown option '" + option + "'");
        }
    }

    const std::string& ValueOf(const std::string& option) {
        if (next_ == words_.size()) Refuse("'" + option + "' needs a value");
        return words_[next_++];
    }

    void TakeInformation(Command command) {
        arguments_.command = command;
        isInformation_ = true;
    }

    void TakeDirection(Direction direction) {
        if (arguments_.direction != Direction::Both && arguments_.direction != direction) {
            Refuse("'--send-only' and '--receive-only' exclude each other");
        }
        arguments_.direction = direction;
    }

    void TakeOperands() {
        if (operands_.empty()) Refuse("neither listen nor connect was given");
        if (arguments_.logFile && arguments_.categories.empty()) {
            Refuse("'--log-file' needs '--trace'");
        }
        if (operands_.front() == "listen") return TakeListen();
        if (operands_.front() == "connect") return TakeConnect();
        Refuse("unknown command '" + operands_.front() + "'");
    }

    void TakeListen() {
        arguments_.command = Command::Listen;
        if (operands_.size() < 2 || operands_.size() > 3) Refuse("listen takes [HOST] PORT");
        if (operands_.size() == 3) TakeHost(operands_[1]);
        arguments_.port = ParsePort(operands_.back());
    }

    void TakeConnect() {
        arguments_.command = Command::Connect;
        if (operands_.size() != 3) Refuse("connect takes HOST PORT");
        TakeHost(operands_[1]);
        arguments_.port = ParsePort(operands_.back());
        if (arguments_.port == 0) Refuse("connect needs a port from 1");
    }

    void TakeHost(const std::string& host) {
        if (host.empty()) Refuse("the host is empty");
        arguments_.host = host;
    }

    const std::vector<std::string>& words_;
    std::size_t next_ = 0;
    std::vector<std::string> operands_;
    bool optionsEnded_ = false;
    bool isInformation_ = false;
    Arguments arguments_;
};

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words) {
    return Parser(words).Parse();
}

}  // namespace VelSockCat

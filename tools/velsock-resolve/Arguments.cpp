#include "Arguments.h"

#include "Failure.h"

namespace VelSockResolve {

namespace {

[[noreturn]] void Refuse(const std::string& text) {
    using VelSockTools::ExitCode;
    throw VelSockTools::Failure(ExitCode::WrongUsage, text + "; see velsock-resolve --help");
}

bool LooksLikeOption(const std::string& word) {
    return word.size() >= 2 && word.front() == '-';
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& words) : words_(words) {}

    Arguments Parse() {
        for (const std::string& word : words_)
            TakeWord(word);
        if (arguments_.command == Command::Answer) CheckQuestion();
        return std::move(arguments_);
    }

private:
    void TakeWord(const std::string& word) {
        if (!optionsEnded_ && LooksLikeOption(word)) return TakeOption(word);
        if (arguments_.question == nullptr) return TakeQuestion(word);
        arguments_.operands.push_back(word);
    }

    void TakeOption(const std::string& option) {
        if (option == "--help") {
            arguments_.command = Command::Help;
        } else if (option == "--version") {
            arguments_.command = Command::Version;
        } else if (option == "--cache") {
            arguments_.cache = true;
        } else if (option == "--json") {
            arguments_.json = true;
        } else if (option == "--") {
            optionsEnded_ = true;
        } else {
            Refuse("unknown option '" + option + "'");
        }
    }

    void TakeQuestion(const std::string& name) {
        arguments_.question = FindQuestion(name);
        if (arguments_.question == nullptr) Refuse("unknown question '" + name + "'");
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
    }

    const std::vector<std::string>& words_;
    bool optionsEnded_ = false;
    Arguments arguments_;
};

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words) {
    return Parser(words).Parse();
}

}  // namespace VelSockResolve

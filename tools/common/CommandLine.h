// A command line as options and operands.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VelSockTools {

// Throws Failure with WrongUsage: the text, and where to find help.
[[noreturn]] void RefuseUsage(const char* program, const std::string& text);

// Splits words into options and operands, in any order, until "--", after which all are operands.
// "-v" and "--verbose" are options, "-lv" two of them, "-" alone is an operand. The value of an
// option is attached to it ("--size=5", "-q5") or the next word.
class CommandLine {
public:
    struct Item {
        bool isOption;
        std::string text;  // of an option, its name with the dashes
    };

    CommandLine(const char* program, const std::vector<std::string>& words)
        : program_(program), words_(words) {}

    // Returns nothing at the end. Throws Failure with WrongUsage if the option before it has a
    // value attached that nobody took.
    std::optional<Item> Next();

    // Hands the names of the options that are left to the function, which may take their values,
    // and returns the operands. Throws what Next throws.
    template <class TakeOption>
    std::vector<std::string> TakeAll(const TakeOption& takeOption) {
        std::vector<std::string> operands;
        while (auto item = Next()) {
            if (item->isOption) {
                takeOption(item->text);
            } else {
                operands.push_back(std::move(item->text));
            }
        }
        return operands;
    }

    // Whether a value is attached to the option that Next returned last.
    bool HasValue() const noexcept { return value_.has_value(); }

    // Takes the value of the option that Next returned last. Throws Failure with WrongUsage if
    // there is none.
    std::string Value();

private:
    Item OptionOf(const std::string& word);
    Item LetterOf(std::string_view letters);

    const char* program_;
    const std::vector<std::string>& words_;
    std::size_t next_ = 0;
    bool optionsEnded_ = false;
    std::string option_;                // the one that Next returned last
    std::optional<std::string> value_;  // what is attached to it after '='
    std::string letters_;               // what follows its letter: a value, or other options
};

}  // namespace VelSockTools

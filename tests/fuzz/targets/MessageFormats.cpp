// The formatter of records, against one that goes unit by unit. The input is the number of
// arguments, each argument's kind and line, and the format.
#include <VelResource/MessageFormatter.h>

#include <algorithm>
#include <list>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "support/Text.h"
#include "unit/text/ModelCodec.h"

namespace {

// Arguments as the formatter gets them, which does not copy their texts, and as readers see them.
struct Arguments {
    VelResource::MessageFormatter formatter;
    std::list<std::string> narrow;
    std::list<std::vector<unsigned short>> wide;
    std::vector<std::u16string> texts;
};

void AddNumber(Arguments& arguments, int number) {
    arguments.formatter.AddInteger(number);
    arguments.texts.push_back(Support::Widen(std::to_string(number)));
}

void AddNarrow(Arguments& arguments, std::string_view line) {
    arguments.narrow.push_back(Fuzz::CText(line));
    arguments.formatter.AddNarrowText(arguments.narrow.back().c_str());
    arguments.texts.push_back(Model::Utf16FromUtf8(arguments.narrow.back()));
}

void AddWide(Arguments& arguments, std::string_view line) {
    const std::u16string text = Model::Utf16FromUtf8(Fuzz::CText(line));
    arguments.wide.push_back(Support::Wide(text));
    arguments.formatter.AddWideText(arguments.wide.back().data());
    arguments.texts.push_back(text);
}

void Add(Arguments& arguments, Fuzz::Input& input) {
    const unsigned int kind = input.Below(4);
    if (kind == 0) AddNumber(arguments, input.Number());
    if (kind == 1) AddNarrow(arguments, input.Line());
    if (kind == 2) AddWide(arguments, input.Line());
    if (kind == 3) {
        arguments.formatter.AddNarrowText(nullptr);
        arguments.texts.emplace_back();
    }
}

// Without the arguments that no place can name.
std::u16string Formatted(const std::string& format, const std::vector<std::u16string>& texts) {
    std::u16string message;
    std::string literal;
    for (std::size_t index = 0; index < format.size(); ++index) {
        const auto argument = static_cast<std::size_t>(format[index + 1] - '1');
        if (format[index] != '%' || argument >= std::min<std::size_t>(texts.size(), 9)) {
            literal += format[index];
            continue;
        }
        message += Model::Utf16FromUtf8(literal) + texts[argument];
        literal.clear();
        ++index;
    }
    return message + Model::Utf16FromUtf8(literal);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Fuzz::Input input(data, size);
    Arguments arguments;
    arguments.formatter.Clear();
    for (unsigned int count = input.Below(12); count > 0; --count)
        Add(arguments, input);
    const std::string format = Fuzz::CText(input.Rest());

    const VelBase::WideText message = arguments.formatter.Format(format.c_str());
    const std::u16string expected = Formatted(format, arguments.texts);
    Fuzz::Expect("the message", expected, Support::Text(message.Units()));
    Fuzz::Expect("its length", expected.size(), message.Length());
    arguments.formatter.Clear();
    return 0;
}

#include "VelResource/MessageFormatter.h"

#include <string_view>
#include <type_traits>

namespace VelResource {

namespace {

// Room reserved for a message; a longer one grows.
constexpr std::size_t UsualLength = 255;

struct ArgumentList {
    MessageArgument arguments[MessageFormatter::MaximumArguments];
    int count;
    unsigned int connection;
};

// Nothing is constructed when a thread starts and nothing destroyed when it ends, so that records
// can be written while a thread or the process exits.
static_assert(std::is_trivially_destructible_v<ArgumentList>);
constinit thread_local ArgumentList t_list = {};

void Add(const MessageArgument& argument) noexcept {
    if (t_list.count < MessageFormatter::MaximumArguments)
        t_list.arguments[t_list.count++] = argument;
}

// Whether the text, which begins with a percent sign, goes on with a digit that names an argument:
// one from 1 to the number of arguments.
bool IsPlace(std::string_view text) noexcept {
    return text.size() > 1 && text[1] >= '1' && text[1] - '1' < t_list.count;
}

std::size_t FindPlace(std::string_view text) noexcept {
    std::size_t position = text.find('%');
    while (position != std::string_view::npos && !IsPlace(text.substr(position)))
        position = text.find('%', position + 1);
    return position;
}

void AppendArgument(VelBase::WideText& text, const MessageArgument& argument) {
    switch (argument.kind) {
        case MessageArgument::Kind::WideText:
            text.Append(argument.wide);
            break;
        case MessageArgument::Kind::NarrowText:
            text.AppendMultiByte(argument.narrow);
            break;
        case MessageArgument::Kind::Integer:
            text.AppendDecimal(argument.integer);
            break;
    }
}

}  // namespace

MessageFormatter& MessageFormatter::AddWideText(const unsigned short* text) noexcept {
    Add({MessageArgument::Kind::WideText, text, nullptr, 0});
    return *this;
}

MessageFormatter& MessageFormatter::AddNarrowText(const char* text) noexcept {
    Add({MessageArgument::Kind::NarrowText, nullptr, text != nullptr ? text : "", 0});
    return *this;
}

MessageFormatter& MessageFormatter::AddInteger(int number) noexcept {
    Add({MessageArgument::Kind::Integer, nullptr, nullptr, number});
    return *this;
}

void MessageFormatter::SetConnection(unsigned int connection) noexcept {
    t_list.connection = connection;
}

unsigned int MessageFormatter::Connection() const noexcept {
    return t_list.connection;
}

void MessageFormatter::Clear() noexcept {
    t_list.count = 0;
    t_list.connection = 0;
}

int MessageFormatter::ArgumentCount() const noexcept {
    return t_list.count;
}

const MessageArgument& MessageFormatter::Argument(int position) const noexcept {
    return t_list.arguments[position];
}

VelBase::WideText MessageFormatter::Format(const char* format) const {
    VelBase::WideText message(UsualLength);
    std::string_view rest = format;
    for (std::size_t place = FindPlace(rest); place != std::string_view::npos;
         place = FindPlace(rest)) {
        message.AppendUtf8(rest.substr(0, place));
        AppendArgument(message, Argument(rest[place + 1] - '1'));
        rest.remove_prefix(place + 2);
    }
    message.AppendUtf8(rest);
    return message;
}

}  // namespace VelResource

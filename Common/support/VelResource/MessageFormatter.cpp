#include "VelResource/MessageFormatter.h"

#include "VelBase/LibraryConversions.h"

#include <algorithm>
#include <string_view>
#include <type_traits>

namespace VelResource {
namespace {

struct ArgumentList {
    MessageArgument arguments[MessageFormatter::MaximumArguments];
    int count;
};

// Nothing is constructed when a thread starts and nothing destroyed when it ends, so that records
// can be written while a thread or the process exits.
static_assert(std::is_trivially_destructible_v<ArgumentList>);
constinit thread_local ArgumentList t_list = {};

void Add(const MessageArgument& argument) noexcept {
    if (t_list.count < MessageFormatter::MaximumArguments)
        t_list.arguments[t_list.count++] = argument;
}

// The digits that name an argument are 1 to the number of arguments.
bool IsPlace(std::string_view text) noexcept {
    return text.size() > 1 && text[0] == '%' && text[1] >= '1' && text[1] - '1' < t_list.count;
}

std::size_t FindPlace(std::string_view text) noexcept {
    std::size_t position = 0;
    while (position < text.size() && !IsPlace(text.substr(position)))
        ++position;
    return position;
}

// Most strings are ASCII, which is the same in every code page.
bool IsAscii(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

void AppendNarrow(VelBase::WideText& text, const char* narrow) {
    if (IsAscii(narrow))
        text.AppendUtf8(narrow);
    else
        text.Append(VelBase::MultiByteToWideChar(narrow, false));
}

void AppendArgument(VelBase::WideText& text, const MessageArgument& argument) {
    switch (argument.kind) {
        case MessageArgument::Kind::WideText:
            text.Append(argument.wide);
            break;
        case MessageArgument::Kind::NarrowText:
            AppendNarrow(text, argument.narrow);
            break;
        case MessageArgument::Kind::Integer:
            text.Append(VelBase::ToDecimalWString(argument.integer));
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

void MessageFormatter::Clear() noexcept {
    t_list.count = 0;
}

int MessageFormatter::ArgumentCount() const noexcept {
    return t_list.count;
}

const MessageArgument& MessageFormatter::Argument(int position) const noexcept {
    return t_list.arguments[position];
}

VelBase::WideText MessageFormatter::Format(const char* format) const {
    VelBase::WideText message;
    std::string_view rest = format;
    for (std::size_t place = FindPlace(rest); place < rest.size(); place = FindPlace(rest)) {
        message.AppendUtf8(rest.substr(0, place));
        AppendArgument(message, Argument(rest[place + 1] - '1'));
        rest.remove_prefix(place + 2);
    }
    message.AppendUtf8(rest);
    return message;
}

}  // namespace VelResource

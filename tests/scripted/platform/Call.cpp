#include "Call.h"

#include <algorithm>
#include <cstring>

#include "support/Text.h"

namespace Scripted {

namespace {

bool IsPlain(unsigned int unit) {
    return unit >= 0x20 && unit <= 0x7E;
}

}  // namespace

std::string HexNumber(long long number, int digits) {
    static constexpr char Digits[] = "0123456789ABCDEF";
    auto rest = static_cast<unsigned long long>(number);
    std::string text;
    for (; rest != 0 || text.empty() || static_cast<int>(text.size()) < digits; rest >>= 4)
        text.insert(text.begin(), Digits[rest & 15]);
    return text;
}

std::string QuotedBytes(const char* bytes, std::size_t length) {
    std::string text = "\"";
    for (std::size_t index = 0; index < length; ++index) {
        const auto byte = static_cast<unsigned char>(bytes[index]);
        if (IsPlain(byte))
            text += bytes[index];
        else
            text += "\\x" + HexNumber(byte, 2);
    }
    return text + '"';
}

std::string QuotedUnits(std::u16string_view units) {
    std::string text = "\"";
    for (const char16_t unit : units) {
        if (IsPlain(unit))
            text += static_cast<char>(unit);
        else
            text += "\\u" + HexNumber(unit, 4);
    }
    return text + '"';
}

std::string HexBytes(const void* bytes, int length) {
    std::string text = "0x";
    for (int index = 0; index < length; ++index)
        text += HexNumber(static_cast<const unsigned char*>(bytes)[index], 2);
    return text;
}

Call::Call(std::string name) {
    event_.call = std::move(name);
}

void Call::Separate() {
    if (!arguments_.empty() && arguments_.back() != '{') arguments_ += ", ";
}

Call& Call::Plain(const std::string& text) {
    Separate();
    arguments_ += text;
    return *this;
}

Call& Call::Open() {
    return Plain("{");
}

Call& Call::Close() {
    arguments_ += '}';
    return *this;
}

Call& Call::Number(long long number) {
    event_.numbers.push_back(number);
    return Plain(std::to_string(number));
}

Call& Call::Hex(long long number, int digits) {
    event_.numbers.push_back(number);
    return Plain("0x" + HexNumber(number, digits));
}

Call& Call::Handle(Winsock::Handle handle) {
    event_.numbers.push_back(static_cast<long long>(handle));
    return Plain(handle == Winsock::InvalidSocket ? "INVALID" : std::to_string(handle));
}

Call& Call::Pointer(const void* pointer) {
    event_.pointer = pointer;
    return *this;
}

Call& Call::Bytes(const void* bytes, int length, const std::string& text) {
    if (bytes != nullptr && length > 0)
        event_.bytes.assign(static_cast<const char*>(bytes), static_cast<std::size_t>(length));
    return Pointer(bytes).Plain(bytes == nullptr ? "null" : text);
}

Call& Call::Quoted(const char* bytes, int length) {
    const auto count = static_cast<std::size_t>(bytes == nullptr ? 0 : std::max(length, 0));
    return Bytes(bytes, length, QuotedBytes(bytes, count));
}

Call& Call::Quoted(const char* text) {
    return Quoted(text, text == nullptr ? 0 : static_cast<int>(std::strlen(text)));
}

Call& Call::Quoted(const unsigned short* text) {
    return Pointer(text).Plain(text == nullptr ? "null" : QuotedUnits(Support::Text(text)));
}

Call& Call::Bare() {
    bare_ = true;
    return *this;
}

const Answer& Call::Play() {
    event_.text = bare_ ? event_.call : event_.call + "(" + arguments_ + ")";
    event_.thread = std::this_thread::get_id();
    answer_ = TakeAnswer(event_.call);
    Record(event_);
    if (answer_.kind == Answer::Kind::Exception) std::rethrow_exception(answer_.exception);
    return answer_;
}

long long Call::Finish(long long usual, long long failure) {
    if (IsFailure()) return Fail(answer_.error, answer_.result != 0 ? answer_.result : failure);
    Succeed();
    return IsUsual() ? usual : answer_.result;
}

long long Call::Fail(int error, long long failure) const noexcept {
    SetLastError(error);
    return failure;
}

}  // namespace Scripted

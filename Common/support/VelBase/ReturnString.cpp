#include "VelBase/ReturnString.h"

#include "OwnedText.h"

#include <cstring>
#include <utility>

namespace VelBase {

namespace {

std::size_t LengthOf(const char* text) noexcept {
    return text != nullptr ? std::strlen(text) : 0;
}

}  // namespace

ReturnString::ReturnString() noexcept = default;
ReturnString::ReturnString(const char* text) : text_(CopyText(text, LengthOf(text))) {}
ReturnString::ReturnString(const ReturnString& other) : ReturnString(other.text_) {}
ReturnString::ReturnString(ReturnString&& other) noexcept
    : text_(std::exchange(other.text_, nullptr)) {}

ReturnString& ReturnString::operator=(const ReturnString& other) {
    return *this = ReturnString(other);
}

ReturnString& ReturnString::operator=(ReturnString&& other) noexcept {
    delete[] std::exchange(text_, std::exchange(other.text_, nullptr));
    return *this;
}

ReturnString::~ReturnString() {
    delete[] text_;
}

const char* ReturnString::c_str() const noexcept {
    return text_ != nullptr ? text_ : EmptyText<char>;
}

}  // namespace VelBase

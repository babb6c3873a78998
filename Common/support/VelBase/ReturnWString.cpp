#include "VelBase/ReturnWString.h"

#include "OwnedText.h"
#include "Text/WideLength.h"

#include <utility>

namespace VelBase {

ReturnWString::ReturnWString() noexcept = default;
ReturnWString::ReturnWString(const unsigned short* text)
    : text_(CopyText(text, Text::WideLength(text))) {}
ReturnWString::ReturnWString(const ReturnWString& other) : ReturnWString(other.text_) {}
ReturnWString::ReturnWString(ReturnWString&& other) noexcept
    : text_(std::exchange(other.text_, nullptr)) {}

ReturnWString& ReturnWString::operator=(const ReturnWString& other) {
    return *this = ReturnWString(other);
}

ReturnWString& ReturnWString::operator=(ReturnWString&& other) noexcept {
    delete[] std::exchange(text_, std::exchange(other.text_, nullptr));
    return *this;
}

ReturnWString::~ReturnWString() {
    delete[] text_;
}

const unsigned short* ReturnWString::c_str() const noexcept {
    return text_ != nullptr ? text_ : EmptyText<unsigned short>;
}

}  // namespace VelBase

#include "VelNet/Exception.h"

#include "Socket/ErrorTable.h"

namespace VelNet {

namespace {

const ErrorTableRow& FindRow(int error) noexcept {
    const ErrorTableRow* row = ErrorTable;
    while (row->winsockKey != ErrorTableEndKey && row->winsockKey != error)
        ++row;
    return *row;
}

}  // namespace

// Required (ExceptionValue.NullTextLeavesTextAndCodeUnwritten): a null text leaves text and code as
// the memory was, so there are no initializers.
Exception::Exception(const unsigned short* text, SOCKET_ERR code) {
    if (text == nullptr) return;

    unsigned int index = 0;
    for (; index < TextUnits - 1 && text[index] != 0; ++index)
        text_[index] = text[index];
    for (; index < TextUnits; ++index)
        text_[index] = 0;
    code_ = code;
}

Exception::Exception(const Exception& other) = default;
Exception& Exception::operator=(const Exception& other) = default;
Exception::~Exception() = default;

const unsigned short* Exception::GetMessage() const {
    return text_;
}

SOCKET_ERR Exception::GetErrorCode() const noexcept {
    return code_;
}

SOCKET_ERR Exception::GetSocketError(int error) noexcept {
    return FindRow(error).code;
}

const unsigned short* Exception::GetErrorString(int error) noexcept {
    return FindRow(error).text;
}

}  // namespace VelNet

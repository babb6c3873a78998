// Failures as the tests compare them.
#pragma once

#include <VelNet/Exception.h>
#include <support/Text.h>

#include <iosfwd>
#include <string>

namespace Loopback {

using Support::ErrorTail;
using Support::Text;
using Support::Widen;

// What a VelNet::Exception carries.
struct Failure {
    std::u16string text;
    int code;

    bool operator==(const Failure&) const = default;
};
void PrintTo(const Failure& failure, std::ostream* stream);

// The failure of an operation that ends with a system error: what it says, then the error.
Failure SystemFailure(std::u16string text, int number, std::u16string_view description);

// What a receiver meets when its peer has closed the connection in good order.
Failure ConnectionClosed();

// What a receiver meets when the system reports an error.
Failure ReceiveFailed(int number, std::u16string_view description);

// Everything stands in the exception itself.
void ExpectEmptyBase(const VelBase::Message& base);

// What the operation throws. An operation that throws nothing gives a text that no failure has.
template <class Operation>
Failure FailureOf(Operation operation) {
    try {
        operation();
    } catch (const VelNet::Exception& exception) {
        ExpectEmptyBase(exception);
        return {Text(exception.GetMessage()), exception.GetErrorCode()};
    }
    return {u"(nothing was thrown)", 0};
}

}  // namespace Loopback

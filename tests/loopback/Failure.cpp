#include <gtest/gtest.h>
#include <loopback/Failure.h>

#include <ostream>

namespace Loopback {

void PrintTo(const Failure& failure, std::ostream* stream) {
    *stream << testing::PrintToString(failure.text) << ", code " << failure.code;
}

void ExpectEmptyBase(const VelBase::Message& base) {
    EXPECT_EQ(base.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
    EXPECT_EQ(base.GetID(), 0);
    EXPECT_EQ(Text(base.GetMessage()), u"");
}

Failure SystemFailure(std::u16string text, int number, std::u16string_view description) {
    return {text + ErrorTail(number, description), number};
}

Failure ConnectionClosed() {
    return {
        u"VelNet::SocketImpl::Receive() - FAIL. The ::recv could not be completed because the "
        u"connection has been closed.",
        -1};
}

Failure ReceiveFailed(int number, std::u16string_view description) {
    return SystemFailure(u"VelNet::SocketImpl::Receive() - FAIL. The ::recv failed", number,
                         description);
}

}  // namespace Loopback

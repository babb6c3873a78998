// What the companion says about failures of the library.
#include <VelBase/ExceptionImpl.h>
#include <VelCompanion/Errors.h>
#include <VelNet/SocketAddress.h>
#include <loopback/ExtendedTest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Companion {
namespace {

using Loopback::SocketPtr;
using Support::Wide;
using VelCompanion::Describe;
using VelNet::Exception;

Exception Thrown(const char* text, VelNet::SOCKET_ERR code) {
    return {Wide(text).data(), code};
}

Exception ThrownWithNumber(std::u16string text, int number, VelNet::SOCKET_ERR code) {
    text += static_cast<char16_t>(number);
    return {Wide(text + u" Its text").data(), code};
}

// What an operation of the library throws.
template <class Operation>
Exception ExceptionOf(Operation operation) {
    try {
        operation();
    } catch (const Exception& exception) {
        return exception;
    }
    throw std::logic_error("nothing was thrown");
}

using ErrorsOfTheLibrary = Loopback::LoopbackTest;

TEST_F(ErrorsOfTheLibrary, ARefusalHasItsNumberInDigitsAndItsSymbol) {
    const SocketPtr closedPort = Loopback::Bound(Loopback::StreamSocket());
    const unsigned short port = Loopback::PortOf(*closedPort);
    const SocketPtr client = Loopback::StreamSocket();
    const Exception refusal = ExceptionOf([&] { client->Connect(Loopback::LocalHost(), port); });
    EXPECT_EQ(Describe(refusal),
              "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:" +
                  std::to_string(port) +
                  ", errno = 10061 (SOCKET_ERR_CONNREFUSED) Connection refused");
    EXPECT_EQ(VelCompanion::ErrorCodeOf(refusal), std::errc::connection_refused);
}

TEST_F(ErrorsOfTheLibrary, AnExtendedSocketsAreTold) {
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    const Exception failure = ExceptionOf([&] { socket->Listen(); });
    EXPECT_EQ(
        Describe(failure),
        "VelNet::SocketXtImpl::Listen , cannot listen on socket , ::listen ,  , errno = 10022 "
        "(SOCKET_ERR_INVAL) Invalid argument");
}

TEST_F(ErrorsOfTheLibrary, TheEndOfAStreamIsNoOtherFailure) {
    const Loopback::Connection connection = Loopback::Connected();
    connection.server->Close();
    char byte = 0;
    const Exception end = ExceptionOf([&] { connection.client->Receive(&byte, 1); });
    EXPECT_TRUE(VelCompanion::IsEndOfStream(end));
    EXPECT_FALSE(VelCompanion::IsTimeout(end));
    EXPECT_FALSE(VelCompanion::WouldBlock(end));
    EXPECT_EQ(Describe(end),
              "VelNet::SocketImpl::Receive() - FAIL. The ::recv could not be completed because the "
              "connection has been closed.");
    // The same code.
    EXPECT_FALSE(VelCompanion::IsEndOfStream(ExceptionOf(
        [] { VelNet::SocketAddress::ConvertDottedStringToOctets("no dotted address"); })));
}

TEST_F(ErrorsOfTheLibrary, ATimeoutIsOne) {
    const Loopback::Connection connection = Loopback::Connected();
    connection.client->SetReceiveTimeout(1);
    char byte = 0;
    const Exception timeout = ExceptionOf([&] { connection.client->Receive(&byte, 1); });
    EXPECT_TRUE(VelCompanion::IsTimeout(timeout));
    EXPECT_FALSE(VelCompanion::IsEndOfStream(timeout));
    EXPECT_EQ(VelCompanion::ErrorCodeOf(timeout), std::errc::timed_out);
}

TEST_F(ErrorsOfTheLibrary, ACallThatWouldBlockIsOne) {
    const Loopback::Connection connection = Loopback::Connected();
    EXPECT_TRUE(connection.client->SetNonBlocking());
    char byte = 0;
    const Exception failure = ExceptionOf([&] { connection.client->Receive(&byte, 1); });
    EXPECT_TRUE(VelCompanion::WouldBlock(failure));
    EXPECT_FALSE(VelCompanion::IsTimeout(failure));
    EXPECT_EQ(VelCompanion::ErrorCodeOf(failure), std::errc::operation_would_block);
}

class ErrorsOfExtendedStreams : public Loopback::ExtendedTest {};

TEST_P(ErrorsOfExtendedStreams, TheEndIsRecognizedAndHasMinusOneForItsNumber) {
    const Loopback::XtConnection connection = Connected();
    connection.server->Close();
    char byte = 0;
    const Exception end = ExceptionOf([&] { connection.client->Receive(&byte, 1); });
    EXPECT_TRUE(VelCompanion::IsEndOfStream(end));
    const std::string tail = "errno = -1 (SOCKET_ERR_UNKNOWN) Unknown error";
    const std::string text = Describe(end);
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
}

INSTANTIATE_TEST_SUITE_P(Versions, ErrorsOfExtendedStreams,
                         testing::Values(Loopback::Ipv4, Loopback::Ipv6), Loopback::NameOfVersion);

TEST(ErrorsDescribed, TheLastNumberCounts) {
    EXPECT_EQ(Describe(ThrownWithNumber(u"host errno = 1 , errno = ", 10060,
                                        VelNet::SOCKET_ERR_TIMEDOUT)),
              "host errno = 1 , errno = 10060 (SOCKET_ERR_TIMEDOUT) Its text");
}

TEST(ErrorsDescribed, TheNumberIsTheSystemsAndTheSymbolTheCodes) {
    EXPECT_EQ(Describe(ThrownWithNumber(u"errno = ", 43, VelNet::SOCKET_ERR_PROTONOSUPPORT)),
              "errno = 43 (SOCKET_ERR_PROTONOSUPPORT) Its text");
    EXPECT_EQ(Describe(ThrownWithNumber(u"errno = ", -2, VelNet::SOCKET_ERR_NOT_PERMITTED)),
              "errno = -2 (SOCKET_ERR_NOT_PERMITTED) Its text");
    EXPECT_EQ(Describe(ThrownWithNumber(u"errno = ", 10109, VelNet::SOCKET_ERR_UNKNOWN)),
              "errno = 10109 (SOCKET_ERR_UNKNOWN) Its text");
}

TEST(ErrorsDescribed, TextWithoutANumberGetsTheCodeAtItsEnd) {
    EXPECT_EQ(Describe(Thrown("Late", VelNet::SOCKET_ERR_TIMEDOUT)),
              "Late, 10060 (SOCKET_ERR_TIMEDOUT)");
    EXPECT_EQ(Describe(Thrown("Cut, errno = ", VelNet::SOCKET_ERR_TIMEDOUT)),
              "Cut, errno = , 10060 (SOCKET_ERR_TIMEDOUT)");
    EXPECT_EQ(Describe(Thrown("Odd", VelNet::SOCKET_ERR_UNKNOWN)), "Odd");
    EXPECT_EQ(Describe(Thrown("", VelNet::SOCKET_ERR_UNKNOWN)), "");
}

TEST(ErrorsDescribed, OtherLettersAreUtf8) {
    const Exception failure(Wide(u"K\u00f6ln \U0001F40E, errno = \u274D t\u00e9").data(),
                            VelNet::SOCKET_ERR_CONNREFUSED);
    EXPECT_EQ(Describe(failure),
              "K\xC3\xB6ln \xF0\x9F\x90\x8E, errno = 10061 (SOCKET_ERR_CONNREFUSED) t\xC3\xA9");
}

TEST(ErrorsDescribed, OfTheSupportLibrariesHaveTheirIdentifier) {
    VelBase::Message message;
    message.SetMessage(Wide("No start").data());
    EXPECT_EQ(Describe(message), "No start");
    message.SetDomainAndID(1, -42);
    EXPECT_EQ(Describe(message), "No start (-42)");
}

// The text of what is thrown, when it is caught.
template <class Thrown>
std::string DescribedWhenCaught(const Thrown& thrown) {
    try {
        throw thrown;
    } catch (...) {
        return VelCompanion::DescribeCurrentException();
    }
}

TEST(ErrorsDescribed, WhicheverIsBeingHandled) {
    VelBase::Message message;
    message.SetMessage(Wide("message").data());
    EXPECT_EQ(DescribedWhenCaught(Thrown("text", VelNet::SOCKET_ERR_UNKNOWN)), "text");
    EXPECT_EQ(DescribedWhenCaught(VelBase::ExceptionImpl<VelBase::Message>(message)), "message");
    EXPECT_EQ(DescribedWhenCaught(std::runtime_error("standard")), "standard");
    EXPECT_EQ(DescribedWhenCaught(17), "unknown exception");
    EXPECT_EQ(VelCompanion::DescribeCurrentException(), "");
}

TEST(ErrorsAsCodes, HaveTheLibrarysNumbersAndSymbols) {
    const std::error_code code = VelCompanion::ErrorCodeOf(VelNet::SOCKET_ERR_CONNREFUSED);
    EXPECT_EQ(code.value(), 10061);
    EXPECT_STREQ(code.category().name(), "VelNet");
    EXPECT_EQ(code.message(), "10061 (SOCKET_ERR_CONNREFUSED) Connection refused");
    EXPECT_EQ(code, VelCompanion::ErrorCodeOf(VelNet::SOCKET_ERR_CONNREFUSED));
    EXPECT_NE(code, VelCompanion::ErrorCodeOf(VelNet::SOCKET_ERR_TIMEDOUT));
    EXPECT_NE(code, std::error_code(10061, std::system_category()));
}

TEST(ErrorsAsCodes, AreEquivalentToTheStandardLibrarysConditions) {
    EXPECT_EQ(VelCompanion::ErrorCodeOf(VelNet::SOCKET_ERR_ADDRINUSE), std::errc::address_in_use);
    EXPECT_NE(VelCompanion::ErrorCodeOf(VelNet::SOCKET_ERR_ADDRINUSE), std::errc::timed_out);
    const std::error_code without = VelCompanion::ErrorCodeOf(VelNet::SOCKET_ERR_HOST_NOT_FOUND);
    EXPECT_EQ(without.default_error_condition(),
              std::error_condition(11001, VelCompanion::SocketCategory()));
}

TEST(ErrorsAsCodes, ANumberThatIsNoCodeHasAText) {
    EXPECT_EQ(VelCompanion::SocketCategory().message(7), "7 (SOCKET_ERR_UNKNOWN) Unknown error");
}

std::string TextOfNumber(int number) {
    return VelBase::WideCharToUTF8(Exception::GetErrorString(number), false).c_str();
}

TEST(ErrorsInTheCatalogue, AreInOrderAndNamedOnce) {
    std::set<std::string> symbols;
    int before = -2;
    for (const auto& entry : VelCompanion::ErrorCatalogue) {
        EXPECT_GT(entry.code, before);
        before = entry.code;
        EXPECT_TRUE(symbols.insert(entry.symbol).second) << entry.symbol;
        EXPECT_STREQ(VelCompanion::SymbolOf(entry.code), entry.symbol);
    }
    EXPECT_EQ(symbols.size(), 57U);
}

// The library finds three of its errors by numbers without the usual offset, and only the first of
// the five that have no number.
int SystemNumberOf(int code) {
    switch (code) {
        case VelNet::SOCKET_ERR_PROTONOSUPPORT:
        case VelNet::SOCKET_ERR_SOCKTNOSUPPORT:
        case VelNet::SOCKET_ERR_VERNOTSUPPORTED:
            return code - 10000;
        case VelNet::SOCKET_ERR_NOT_PERMITTED:
            return -2;
        default:
            return code;
    }
}

TEST(ErrorsInTheCatalogue, HaveTheLibrarysTexts) {
    int compared = 0;
    for (const auto& entry : VelCompanion::ErrorCatalogue) {
        const int number = SystemNumberOf(entry.code);
        if (Exception::GetSocketError(number) != entry.code) continue;
        EXPECT_EQ(TextOfNumber(number), entry.text);
        ++compared;
    }
    EXPECT_EQ(compared, 53);  // all but the other four that have no number
}

TEST(ErrorsInTheCatalogue, AreAllThatTheLibraryKnows) {
    for (int number = -10; number <= 70000; ++number) {
        const int code = Exception::GetSocketError(number);
        EXPECT_EQ(VelCompanion::EntryOf(code).code, code) << number;
    }
    static_assert(VelCompanion::EntryOf(12345).code == VelNet::SOCKET_ERR_UNKNOWN);
}

}  // namespace
}  // namespace Companion

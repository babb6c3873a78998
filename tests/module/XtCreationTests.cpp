// The extended socket: how it is made, and the start-up around each operation that resolves or
// accepts.
#include <VelBase/ExceptionImpl.h>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class XtCreation : public LayerTest {};
class XtCreationStartUp : public LayerTest {};

constexpr char Stream[] = "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 1, 6})";

void Create() {
    CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
}

std::string Head(const std::string& call) {
    return "VelNet::CreateSocketXt , cannot create a socket , " + call + " ,  ";
}

TEST_F(XtCreation, ResolvesTheOwnNameAndTakesTheFirstFamilyThatWorks) {
    On::Getaddrinfo().Returns({{23, "2001:DB8::1", 0}, {2, "10.0.0.1", 0}, {2, "10.0.0.2", 0}});
    On::Socket().Fails(10047).Passes();
    const SocketXtPtr socket = CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
    EXPECT_EQ(Transcript(),
              (Lines{"WSAStartup(0x0101)", "ComputerName()",
                     "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 2, 17})", "socket(23, 2, 17)",
                     "socket(2, 2, 17)", "freeaddrinfo(1)", "WSACleanup()"}));
    EXPECT_EQ(socket->GetAddressFamily(), SocketXt::FAMILY_IPV4);
    EXPECT_EQ(socket->GetHandle(), 1001U);
}

TEST_F(XtCreation, UnknownTypeAndProtocolAreLeftToTheSystem) {
    On::Getaddrinfo().Returns({{23, "2001:DB8::1", 0}});
    const SocketXtPtr socket = CreateSocketXt(static_cast<Socket::SOCKET_TYPE>(5),
                                              static_cast<Socket::SOCKET_PROTOCOL>(7));
    EXPECT_EQ(LastEventOf("getaddrinfo").text,
              "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 0, 0})");
    EXPECT_EQ(LastEventOf("socket").text, "socket(23, 0, 0)");
    EXPECT_EQ(socket->GetAddressFamily(), SocketXt::FAMILY_IPV6);
}

TEST_F(XtCreation, AChosenVersionNeedsNoName) {
    const SocketXtPtr socket =
        CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP, SocketXt::FAMILY_IPV6);
    EXPECT_EQ(Transcript(), (Lines{"WSAStartup(0x0101)", "socket(23, 1, 6)", "WSACleanup()"}));
    EXPECT_EQ(socket->GetAddressFamily(), SocketXt::FAMILY_IPV6);
}

TEST_F(XtCreation, EachFailureToMakeOneOfAChosenVersionIsTold) {
    ExpectEachFailure(
        {.failWith = [](int number) { On::Socket().Fails(number); },
         .operation =
             [] {
                 CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP, SocketXt::FAMILY_IPV4);
             },
         .head = Head("::socket"),
         .calls = {"WSAStartup(0x0101)", "socket(2, 1, 6)", "WSAGetLastError()", "WSACleanup()"}});
}

// The number is the last error, not what the call returned.
TEST_F(XtCreation, EachFailureToResolveIsTold) {
    ExpectEachFailure({.failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
                       .operation = Create,
                       .head = Head("::getaddrinfo"),
                       .calls = {"WSAStartup(0x0101)", "ComputerName()", Stream,
                                 "WSAGetLastError()", "WSACleanup()"}});
}

TEST_F(XtCreation, EachFailureToMakeItIsToldWithTheLastNumber) {
    ExpectEachFailure(
        {.failWith =
             [](int number) {
                 On::Getaddrinfo().Returns({{2, "10.0.0.1", 0}, {2, "10.0.0.2", 0}});
                 On::Socket().Fails(10055).Fails(number);
             },
         .operation = Create,
         .head = Head("::socket"),
         .calls = {"WSAStartup(0x0101)", "ComputerName()", Stream, "socket(2, 1, 6)",
                   "socket(2, 1, 6)", "WSAGetLastError()", "freeaddrinfo(1)", "WSACleanup()"}});
}

TEST_F(XtCreation, HostWithoutAddressesIsAFailureToMakeIt) {
    On::Getaddrinfo().ReturnsEmpty();
    EXPECT_EQ(FailureOf(Create), FailureWith(Head("::socket"), Disturbance));
    EXPECT_EQ(CountOf("socket"), 0);
    EXPECT_EQ(LastEventOf("WSACleanup").text, "WSACleanup()");
}

struct Scoped {
    std::string function;
    std::function<void(SocketXt&)> run;
};

const std::vector<Scoped>& ScopedOperations() {
    static const std::vector<Scoped> operations = {
        {"VelNet::CreateSocketXt", [](SocketXt&) { Create(); }},
        {"VelNet::SocketXtImpl::Bind", [](SocketXt& socket) { socket.Bind("host", "80"); }},
        {"VelNet::SocketXtImpl::Connect", [](SocketXt& socket) { socket.Connect("host", "80"); }},
        {"VelNet::SocketXtImpl::Accept",
         [](SocketXt& socket) {
             SocketXtPtr accepted;
             VelBase::ReturnString host, port;
             socket.Accept(accepted, host, port);
         }},
        {"VelNet::SocketXtImpl::SendTo",
         [](SocketXt& socket) { socket.SendTo("abc", 3, "host", "80"); }},
        {"VelNet::SocketXtImpl::RecvFrom",
         [](SocketXt& socket) {
             char buffer[8];
             VelBase::ReturnString host, port;
             socket.RecvFrom(buffer, 8, host, port);
         }},
    };
    return operations;
}

// Domain, number and text of what the operation threw, if it was the support layer's.
std::u16string ThrownBy(const Scoped& operation, SocketXt& socket) {
    try {
        operation.run(socket);
    } catch (const Exception&) {
        return u"another exception";
    } catch (const VelBase::ExceptionImpl<VelBase::Message>& thrown) {
        EXPECT_EQ(thrown.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
        return Widen(std::to_string(thrown.GetID()) + ' ') + Text(thrown.GetMessage());
    }
    return u"nothing";
}

TEST_F(XtCreationStartUp, EachRefusalIsThrownWithTheSystemsWordsAndNotCleanedUp) {
    const SocketXtPtr socket = NewSocketXt();
    for (const Scoped& operation : ScopedOperations()) {
        for (const int number : ErrorNumbersWithout({0})) {
            const auto digits = std::to_string(number);
            const auto unsignedDigits = std::to_string(static_cast<unsigned int>(number));
            ClearTranscript();
            On::WSAStartup().Fails(number);
            EXPECT_EQ(ThrownBy(operation, *socket),
                      Widen(digits + ' ' + operation.function +
                            " ::WSAStartup failed\nDescription of " + unsignedDigits + '.'));
            EXPECT_EQ(TranscriptWithout({"ErrorDescription"}), Lines{"WSAStartup(0x0101)"});
        }
    }
}

TEST_F(XtCreationStartUp, IsBalancedWhetherTheOperationSucceedsOrFails) {
    const SocketXtPtr socket = NewSocketXt();
    for (const Scoped& operation : ScopedOperations()) {
        for (const bool fails : {false, true}) {
            SCOPED_TRACE(operation.function);
            ClearTranscript();
            if (fails) {
                QueueAnswer("getaddrinfo",
                            {.kind = Answer::Kind::Failure, .result = 1, .error = 10050});
                for (const char* const call : {"accept", "recvfrom"})
                    QueueAnswer(call, {.kind = Answer::Kind::Failure, .error = 10050});
            } else {
                On::Recvfrom().Delivers("abc", "10.0.0.9", 4711);
            }
            EXPECT_EQ(FailureOf([&] { operation.run(*socket); }) != NoFailure(), fails);
            ForgetAnswers();
            EXPECT_EQ(CountOf("WSAStartup"), 1);
            EXPECT_EQ(CountOf("WSACleanup"), 1);
            EXPECT_EQ(Ledger(), (Lines{"socket 1001", "start-up"}));
        }
    }
}

}  // namespace
}  // namespace ModuleTests

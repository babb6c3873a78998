// The start and clean-up of Winsock around each operation that resolves or accepts.
#include <VelBase/ExceptionImpl.h>

#include "XtFixture.h"

namespace SocketTests {
namespace {

struct ScopedOperation {
    std::string function;
    std::function<void(SocketXt&)> run;
    std::function<void()> script = [] {};
};

void Accept(SocketXt& socket) {
    VelBase::ReturnPtrI<SocketXt> accepted;
    VelBase::ReturnString host, port;
    socket.Accept(accepted, host, port);
}

void RecvFrom(SocketXt& socket) {
    char buffer[8];
    VelBase::ReturnString host, port;
    socket.RecvFrom(buffer, 8, host, port);
}

std::vector<ScopedOperation> ScopedOperations() {
    return {
        {"VelNet::CreateSocketXt",
         [](SocketXt&) { CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP); }},
        {"VelNet::SocketXtImpl::Bind", [](SocketXt& socket) { socket.Bind("host", "80"); }},
        {"VelNet::SocketXtImpl::Bind", [](SocketXt& socket) { socket.Bind(SPECIAL_ANY, "80"); }},
        {"VelNet::SocketXtImpl::Connect", [](SocketXt& socket) { socket.Connect("host", "80"); }},
        {"VelNet::SocketXtImpl::Connect",
         [](SocketXt& socket) { socket.Connect(SPECIAL_LOOPBACK, "80"); }},
        {"VelNet::SocketXtImpl::Accept", Accept,
         [] { On::Accept().Returns(2001, "10.0.0.9", 4711); }},
        {"VelNet::SocketXtImpl::SendTo",
         [](SocketXt& socket) { socket.SendTo("abc", 3, "host", "80"); }},
        {"VelNet::SocketXtImpl::SendTo",
         [](SocketXt& socket) { socket.SendTo("abc", 3, SPECIAL_LOOPBACK, "80"); }},
        {"VelNet::SocketXtImpl::RecvFrom", RecvFrom,
         [] { On::Recvfrom().Delivers("abc", "10.0.0.9", 4711); }},
        {"VelNet::CreateSocketXt",
         [](SocketXt&) {
             CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP, SocketXt::FAMILY_IPV6);
         }},
    };
}

// What the operation threw, if it was the support libraries' exception and not the socket's.
struct Thrown {
    int kind = 0;  // 1 ExceptionImpl, 2 VelNet::Exception
    unsigned short domain = 0xFFFF;
    int id = 0;
    std::u16string text;
};

Thrown Attempt(const ScopedOperation& operation, SocketXt& socket) {
    try {
        operation.run(socket);
    } catch (const Exception&) {
        return {2, 0, 0, u""};
    } catch (const VelBase::ExceptionImpl<VelBase::Message>& thrown) {
        return {1, thrown.GetDomain(), thrown.GetID(), Text(thrown.GetMessage())};
    }
    return {};
}

class XtStartUp : public XtTest {
protected:
    const std::vector<ScopedOperation> operations_ = ScopedOperations();
};

TEST_F(XtStartUp, IsOfVersionOneOneAndPairedWithACleanUp) {
    const auto socket = MakeXt();
    for (const ScopedOperation& operation : operations_) {
        SCOPED_TRACE(operation.function);
        operation.script();
        ClearTranscript();
        EXPECT_EQ(Attempt(operation, *socket).kind, 0);
        EXPECT_EQ(CountOf("WSAStartup"), 1);
        EXPECT_EQ(LastEventOf("WSAStartup").text, "WSAStartup(0x0101)");
        EXPECT_EQ(CountOf("WSACleanup"), 1);
        EXPECT_EQ(TranscriptWithout({"closesocket", "LogMessage"}).back(), "WSACleanup()");
    }
}

TEST_F(XtStartUp, AnyVersionWillDo) {
    const auto socket = MakeXt();
    for (const ScopedOperation& operation : operations_) {
        SCOPED_TRACE(operation.function);
        operation.script();
        On::WSAStartup().Returns(0, 0x0001, 0xFFFF);
        EXPECT_EQ(Attempt(operation, *socket).kind, 0);
    }
}

// As a thread that is cancelled in the system's call does.
TEST_F(XtStartUp, WhateverIsThrownInsideIsFollowedByTheCleanUp) {
    const auto socket = MakeXt();
    for (const char* const call : {"socket", "bind", "connect", "accept", "sendto", "recvfrom",
                                   "getaddrinfo", "getnameinfo"}) {
        int thrown = 0;
        for (const ScopedOperation& operation : operations_) {
            SCOPED_TRACE(operation.function + " with " + call);
            QueueAnswer(call,
                        {.kind = Answer::Kind::Exception, .exception = std::make_exception_ptr(7)});
            operation.script();
            ClearTranscript();
            const Lines open = Ledger();
            try {
                operation.run(*socket);
            } catch (const int) {
                ++thrown;
            }
            EXPECT_EQ(Ledger(), open);
            EXPECT_EQ(CountOf("WSACleanup"), 1);
            EXPECT_EQ(CountOf("freeaddrinfo"),
                      std::string(call) == "getaddrinfo" ? 0 : CountOf("getaddrinfo"));
            ForgetAnswers();
        }
        EXPECT_GE(thrown, 1) << call;
    }
}

TEST_F(XtStartUp, FailureIsTheSupportLibrarysExceptionAndNotLogged) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    for (const ScopedOperation& operation : operations_) {
        for (const int error : ErrorNumbers()) {
            if (error == 0) continue;
            SCOPED_TRACE(operation.function + ' ' + std::to_string(error));
            On::WSAStartup().Returns(error);
            ClearTranscript();
            const Thrown thrown = Attempt(operation, *socket);
            const std::string number = std::to_string(static_cast<unsigned int>(error));
            EXPECT_EQ(thrown.kind, 1);
            EXPECT_EQ(thrown.domain, VelBase::MESSAGE_DOMAIN_UNKNOWN);
            EXPECT_EQ(thrown.id, error);
            EXPECT_EQ(thrown.text, Widen(operation.function + " ::WSAStartup failed\n" +
                                         "Description of " + number + '.'));
            EXPECT_EQ(Transcript(),
                      (Lines{"WSAStartup(0x0101)", "ErrorDescription(" + number + ")"}));
            EXPECT_EQ(FieldsOf(*socket), before);
        }
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(XtStartUp, FailureIsToldInTheSystemsWords) {
    const auto socket = MakeXt();
    On::WSAStartup().Returns(10091);
    On::ErrorDescription().Returns(u"Das Netz ist \u2620.");
    const Thrown thrown = Attempt(operations_[1], *socket);
    EXPECT_EQ(thrown.text, u"VelNet::SocketXtImpl::Bind ::WSAStartup failed\nDas Netz ist \u2620.");
}

// Special addresses are turned into texts before anything else, and that reads the computer's name.
TEST_F(XtStartUp, NameOfThisMachineIsReadBeforeWinsockIsStarted) {
    const auto socket = MakeXt();
    socket->Bind(SPECIAL_THIS_MACHINE, "80");
    EXPECT_EQ(SystemCalls()[0], "ComputerName()");
    EXPECT_EQ(SystemCalls()[1], "WSAStartup(0x0101)");
}

TEST_F(XtStartUp, OtherOperationsHaveNone) {
    const auto socket = MakeXt(STATE_CONNECTED);
    On::Recv().Delivers("abc");
    char buffer[8];
    socket->Listen();
    socket->SetReceiveTimeout(1);
    socket->SetSendTimeout(1);
    socket->SetReuseAddress();
    socket->Send("abc", 3);
    socket->Receive(buffer, 8);
    socket->SetSocketForBroadcast();
    socket->SetSocketForMulticast("239.1.2.3", 0);
    socket->SetSocketForMulticast(SPECIAL_BROADCAST, 1);
    socket->SetNonBlocking();
    socket->IsDataAvailable();
    socket->GetSpecialAddress(SPECIAL_THIS_MACHINE, SocketXt::FAMILY_IPV4);
    socket->Close();
    EXPECT_EQ(CountOf("WSAStartup"), 0);
    EXPECT_EQ(CountOf("WSACleanup"), 0);
    ForgetOpenAddressLists();
}

TEST_F(XtStartUp, FailureWithoutMemoryForItsTextCleansNothingUp) {
    const auto socket = MakeXt();
    for (const ScopedOperation& operation : operations_) {
        SCOPED_TRACE(operation.function);
        const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
            On::WSAStartup().Returns(10091);
            ClearTranscript();
            const bool exhausted =
                RunsOutOfMemory(n, [&] { EXPECT_EQ(Attempt(operation, *socket).kind, 1); });
            EXPECT_EQ(CountOf("WSACleanup"), 0);
            ForgetAnswers();
            return exhausted;
        });
        EXPECT_GE(failed, 3U);
    }
}

}  // namespace
}  // namespace SocketTests

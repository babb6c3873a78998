// Routers that are switched while an operation waits in the system: what counts is how they stand
// when its call comes back, in both directions and for both kinds of socket.
#include "XtFixture.h"

namespace SocketTests {
namespace {

// An operation that writes records.
struct RecordedOperation {
    std::string call;  // of the system, before the records
    std::function<void()> run;
    // What it writes with these routers on.
    std::function<std::vector<Record>(const Routers&)> records;
    // Makes what it needs, while nothing is recorded.
    std::function<void()> prepare = [] {};
};

Routers OppositeOf(const Routers& routers) {
    return {!routers.error, !routers.connection, !routers.packet, !routers.verbose};
}

std::vector<Record> OnlyIf(bool enabled, const Record& record) {
    return enabled ? std::vector<Record>{record} : std::vector<Record>();
}

RecordedOperation Connection(const std::string& call, std::function<void()> run,
                             const Record& record) {
    return {.call = call, .run = std::move(run), .records = [record](const Routers& routers) {
                return OnlyIf(routers.connection, record);
            }};
}

RecordedOperation Transfer(const std::string& call, std::function<void()> run, const Record& plain,
                           const Record& withData) {
    return {.call = call, .run = std::move(run), .records = [=](const Routers& routers) {
                std::vector<Record> records = OnlyIf(routers.packet, plain);
                if (routers.verbose) records.push_back(withData);
                return records;
            }};
}

// The call fails with 10055, which the operation throws with the text or, where it only logs, not.
RecordedOperation Failure(const std::string& call, const std::function<void()>& run,
                          const std::string& text, bool isThrown = true) {
    const auto failing = [=] {
        NumberAnswers(call).Fails(10055);
        EXPECT_EQ(Catch(run), isThrown ? FailureOf(text, 10055) : Caught());
    };
    return {.call = call, .run = failing, .records = [text](const Routers& routers) {
                return OnlyIf(routers.error, FailureRecord(FailureText(text, 10055)));
            }};
}

template <class Fixture>
class Switching : public Fixture {
protected:
    void ExpectRoutersToCountAfterTheCall(const std::vector<RecordedOperation>& operations) {
        std::vector<Record> expected;
        for (const RecordedOperation& operation : operations) {
            call_ = operation.call;
            Observe(call_, [this](const Event& event) {
                if (event.call == call_) Switch(atTheEnd_);
            });
            for (const Routers& routers : AllCombinationsOfRouters()) {
                Run(operation, routers);
                for (const Record& record : operation.records(routers))
                    expected.push_back(record);
            }
        }
        ExpectRecords(expected);
    }

private:
    void Run(const RecordedOperation& operation, const Routers& routers) {
        Switch({});
        atTheEnd_ = {};
        operation.prepare();
        Switch(OppositeOf(routers));
        atTheEnd_ = routers;
        operation.run();
        Switch({});
        atTheEnd_ = {};
    }

    std::string call_;
    Routers atTheEnd_;
};

class RouterSwitch : public Switching<SocketTest> {};
class RouterSwitchOfXt : public Switching<XtTest> {};

TEST_F(RouterSwitch, DuringATransferCounts) {
    const auto socket = MakeConnectedSocket();
    char buffer[3];
    const auto receive = [&] {
        On::Recv().Delivers("abc");
        socket->Receive(buffer, sizeof buffer);
    };
    ExpectRoutersToCountAfterTheCall(
        {Transfer(
             "send", [&] { socket->Send("abc", 3); }, TransferRecord("Sent", 3),
             TransferRecordWithData("Sent", 3, "616263")),
         Transfer("recv", receive, TransferRecord("Received", 3),
                  TransferRecordWithData("Received", 3, "616263"))});
}

TEST_F(RouterSwitch, DuringConnectCounts) {
    const auto socket = MakeSocket();
    const auto connect = [&] { socket->Connect(OctetsOf(RemoteHost), RemotePort); };
    const Record connected = ConnectionRecord("Connected", "0.0.0.0", 0, "0.0.0.0", 0);
    ExpectRoutersToCountAfterTheCall({Connection("connect", connect, connected),
                                      Connection("getsockname", connect, connected),
                                      Connection("getpeername", connect, connected)});
}

TEST_F(RouterSwitch, DuringAcceptCounts) {
    const auto listener = MakeSocket(STATE_LISTENING);
    VelBase::ReturnPtrI<Socket> accepted;
    SocketAddress remote;
    const auto accept = [&] { accepted = listener->Accept(remote); };
    const Record connected = ConnectionRecord("Connected", "0.0.0.0", 0, "0.0.0.0", 0);
    std::vector<RecordedOperation> operations = {Connection("accept", accept, connected),
                                                 Connection("getsockname", accept, connected)};
    for (RecordedOperation& operation : operations)
        operation.prepare = [&] { accepted = {}; };
    ExpectRoutersToCountAfterTheCall(operations);
}

TEST_F(RouterSwitch, DuringCloseCounts) {
    VelBase::ReturnPtrI<SocketImpl> socket;
    RecordedOperation close = Connection(
        "closesocket", [&] { socket->Close(); },
        ConnectionRecord("Disconnected", "0.0.0.0", 0, "0.0.0.0", 0));
    close.prepare = [&] { socket = MakeSocket(); };
    ExpectRoutersToCountAfterTheCall({close});
}

TEST_F(RouterSwitch, DuringAFailingCallCounts) {
    const auto socket = MakeConnectedSocket();
    char buffer[3];
    SocketAddress remote;
    ExpectRoutersToCountAfterTheCall(
        {Failure(
             "send", [&] { socket->Send("abc", 3); },
             "VelNet::SocketImpl::Send() - FAIL. The ::send failed"),
         Failure(
             "recv", [&] { socket->Receive(buffer, sizeof buffer); },
             "VelNet::SocketImpl::Receive() - FAIL. The ::recv failed"),
         Failure(
             "accept", [&] { socket->Accept(remote); },
             "VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection"),
         Failure(
             "listen", [&] { socket->Listen(); },
             "VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket"),
         Failure(
             "bind", [&] { socket->Bind(Octets(10, 0, 0, 1), 80); },
             "VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80"),
         Failure(
             "connect", [&] { socket->Connect(Octets(10, 0, 0, 1), 80); },
             "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 10.0.0.1:80"),
         Failure(
             "setsockopt", [&] { socket->SetReuseAddress(); },
             "VelNet::SocketImpl::SetReuseAddress() - FAIL. Cannot set Reuse Address", false)});
}

TEST_F(RouterSwitchOfXt, DuringATransferCounts) {
    const auto socket = MakeAddressedXt();
    char buffer[3];
    const auto receive = [&] {
        On::Recv().Delivers("abc");
        socket->Receive(buffer, sizeof buffer);
    };
    const auto plain = [](const std::string& event) {
        return XtTransferRecord(event, 3, LocalText, LocalService, RemoteText, RemoteService);
    };
    const auto withData = [](const std::string& event) {
        return XtTransferRecordWithData(event, 3, LocalText, LocalService, RemoteText,
                                        RemoteService, "616263");
    };
    ExpectRoutersToCountAfterTheCall(
        {Transfer(
             "send", [&] { socket->Send("abc", 3); }, plain("Sent"), withData("Sent")),
         Transfer("recv", receive, plain("Received"), withData("Received"))});
}

TEST_F(RouterSwitchOfXt, DuringADatagramsTransferCounts) {
    const auto socket = MakeDatagramXt();
    StoreTexts(*socket);
    char buffer[3];
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    const auto send = [&] { socket->SendTo("abc", 3, "peer.example", "80"); };
    const auto receive = [&] {
        On::Recvfrom().Delivers("abc", "10.0.0.9", 4711);
        socket->RecvFrom(buffer, sizeof buffer, host, port);
    };
    const Record sent =
        XtTransferRecord("Sendto", 3, ThisMachine, "Random Port", "peer.example", "80");
    const Record sentWithData = XtTransferRecordWithData("Sendto", 3, ThisMachine, "Random Port",
                                                         "peer.example", "80", "616263");
    const Record received =
        XtTransferRecord("Recvfrom", 3, LocalText, LocalService, "10.0.0.9", "4711");
    const Record receivedWithData = XtTransferRecordWithData("Recvfrom", 3, LocalText, LocalService,
                                                             "10.0.0.9", "4711", "616263");
    ExpectRoutersToCountAfterTheCall(
        {Transfer("sendto", send, sent, sentWithData),
         Transfer("freeaddrinfo", send, sent, sentWithData),
         Transfer("recvfrom", receive, received, receivedWithData),
         Transfer("getnameinfo", receive, received, receivedWithData)});
}

TEST_F(RouterSwitchOfXt, DuringConnectCounts) {
    const auto socket = MakeXt();
    const auto connect = [&] { socket->Connect("peer.example", "80"); };
    const Record connected =
        XtConnectionRecord("Connected", ThisMachine, "0", "peer.example", "80");
    ExpectRoutersToCountAfterTheCall({Connection("getaddrinfo", connect, connected),
                                      Connection("connect", connect, connected),
                                      Connection("freeaddrinfo", connect, connected)});
}

TEST_F(RouterSwitchOfXt, DuringAcceptCounts) {
    const auto listener = MakeAddressedXt();
    VelBase::ReturnPtrI<SocketXt> accepted;
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    const auto accept = [&] {
        On::Accept().Returns(2001, "10.0.0.9", 4711);
        listener->Accept(accepted, host, port);
    };
    const Record connected =
        XtConnectionRecord("Connected", LocalText, LocalService, "10.0.0.9", "4711");
    std::vector<RecordedOperation> operations = {Connection("accept", accept, connected),
                                                 Connection("getnameinfo", accept, connected)};
    for (RecordedOperation& operation : operations)
        operation.prepare = [&] { accepted = {}; };
    ExpectRoutersToCountAfterTheCall(operations);
}

TEST_F(RouterSwitchOfXt, DuringCloseCounts) {
    VelBase::ReturnPtrI<SocketXtImpl> socket;
    RecordedOperation close = Connection(
        "closesocket", [&] { socket->Close(); },
        XtConnectionRecord("Disconnected", LocalText, LocalService, RemoteText, RemoteService));
    close.prepare = [&] { socket = MakeAddressedXt(); };
    ExpectRoutersToCountAfterTheCall({close});
}

TEST_F(RouterSwitchOfXt, DuringAFailingCallCounts) {
    const auto socket = MakeAddressedXt();
    char buffer[3];
    VelBase::ReturnPtrI<SocketXt> accepted;
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    const std::string ends = "here.example:4000 : there.example:http";
    ExpectRoutersToCountAfterTheCall(
        {Failure(
             "send", [&] { socket->Send("abc", 3); },
             "VelNet::SocketXtImpl::Send , send on socket failed , ::send , " + ends + " "),
         Failure(
             "recv", [&] { socket->Receive(buffer, sizeof buffer); },
             "VelNet::SocketXtImpl::Receive , recieve on socket failed , ::recv , " + ends + " "),
         Failure(
             "recvfrom", [&] { socket->RecvFrom(buffer, sizeof buffer, host, port); },
             "VelNet::SocketXtImpl::RecvFrom , cannot recvfrom using connectionless socket , "
             "::recvfrom , no-ip : no-port "),
         Failure(
             "accept", [&] { socket->Accept(accepted, host, port); },
             "VelNet::SocketXtImpl::Accept , cannot accept on local socket from remote address , "
             "::accept , here.example : 4000 "),
         Failure(
             "closesocket", [&] { socket->Close(); },
             "VelNet::SocketXtImpl::Close , cannot close a socket , ::getaddrinfo , here.example : "
             "4000 ")});
}

}  // namespace
}  // namespace SocketTests

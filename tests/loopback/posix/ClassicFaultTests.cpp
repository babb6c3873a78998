// What the operations of the classic socket do when the system fails them: exceptions with codes
// and whole texts, records, and what is left.
#include <VelNet/SocketCollection.h>
#include <loopback/LoopbackTest.h>
#include <loopback/posix/FaultTest.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <iterator>
#include <memory>

namespace Loopback {
namespace {

using namespace SystemCalls;
using VelNet::Socket;

class ClassicFault : public LoopbackTest {
protected:
    ClassicFault() { EnableOnly({Error}); }

    template <class Operation>
    void ExpectThrownAndLogged(const Failure& failure, Operation operation) {
        EXPECT_EQ(FailureOf(operation), failure);
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    }

    // The operation throws what it says and the error, for each number of the system.
    template <class Operation>
    void ExpectEach(SystemCall call, const std::u16string& text, Operation operation) {
        for (const Fault& fault : Faults) {
            const FailingCall fails(call, fault.system);
            ExpectThrownAndLogged(fault.Of(text), operation);
            EXPECT_GE(fails.Seen(), 1U);
        }
    }
};

TEST_F(ClassicFault, IsOfTheModuleAndNotOfThisProgram) {
    const SocketPtr socket = DatagramSocket();
    const FailingCall fails(SystemCall::Setsockopt, ENOBUFS);
    const int own = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    EXPECT_EQ(::setsockopt(own, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on), 0);
    EXPECT_EQ(fails.Seen(), 0U);
    ::close(own);
    socket->SetReuseAddress();
    EXPECT_EQ(fails.Seen(), 1U);
    Sink().Take();
}

constexpr Fault AllFaults[] = {
    {ENOTSOCK, 10038, u"Socket operation on nonsocket"},
    {EBADF, 10038, u"Socket operation on nonsocket"},
    {EACCES, 10013, u"Permission denied"},
    {EPERM, 10013, u"Permission denied"},
    {EFAULT, 10014, u"Bad address"},
    {EINVAL, 10022, u"Invalid argument"},
    {EMFILE, 10024, u"Too many open files"},
    {ENFILE, 10024, u"Too many open files"},
    {EAGAIN, 10035, u"Resource temporarily unavailable"},
    {EINPROGRESS, 10036, u"Operation now in progress"},
    {EALREADY, 10037, u"Operation already in progress"},
    {EDESTADDRREQ, 10039, u"Destination address requested"},
    {EMSGSIZE, 10040, u"Message too long"},
    {EPROTOTYPE, 10041, u"Protocol wrong type for socket"},
    {ENOPROTOOPT, 10042, u"Bad protocol option"},
    {EPROTONOSUPPORT, 10043, u"Unknown error", false},
    {ESOCKTNOSUPPORT, 10044, u"Unknown error", false},
    {EOPNOTSUPP, 10045, u"Operation not supported"},
    {ENOSYS, 10045, u"Operation not supported"},
    {EPFNOSUPPORT, 10046, u"Protocol family not supported"},
    {EAFNOSUPPORT, 10047, u"Address family not supported by protocol family"},
    {EADDRINUSE, 10048, u"Address already in use"},
    {EADDRNOTAVAIL, 10049, u"Cannot assign requested address"},
    {ENODEV, 10049, u"Cannot assign requested address"},
    {ENXIO, 10049, u"Cannot assign requested address"},
    {ENETDOWN, 10050, u"Network is down"},
    {ENETUNREACH, 10051, u"Network is unreachable"},
    {ENETRESET, 10052, u"Network dropped connection on reset"},
    {ECONNABORTED, 10053, u"Software caused connection abort"},
    {EPIPE, 10053, u"Software caused connection abort"},
    {ECONNRESET, 10054, u"Connection reset by peer"},
    {ENOBUFS, 10055, u"No buffer space available"},
    {ENOMEM, 10055, u"No buffer space available"},
    {ENOSR, 10055, u"No buffer space available"},
    {EISCONN, 10056, u"Socket is already connected"},
    {ENOTCONN, 10057, u"Socket is not connected"},
    {ESHUTDOWN, 10058, u"Cannot send after socket shutdown"},
    {ETOOMANYREFS, 10059, u"Too many references; cannot splice"},
    {ETIMEDOUT, 10060, u"Connection timed out"},
    {ETIME, 10060, u"Connection timed out"},
    {ECONNREFUSED, 10061, u"Connection refused"},
    {ELOOP, 10062, u"Too many levels of symbolic links"},
    {ENAMETOOLONG, 10063, u"File name too long"},
    {EHOSTDOWN, 10064, u"Host is down"},
    {EHOSTUNREACH, 10065, u"No route to host"},
    {ENONET, 10065, u"No route to host"},
    {ENOTEMPTY, 10066, u"Directory not empty"},
    {EUSERS, 10068, u"Too many users"},
    {EDQUOT, 10069, u"Disk quota exceeded"},
    {ESTALE, 10070, u"Stale NFS file handle"},
    {EREMOTE, 10071, u"Too many levels of remote in path"},
    {EPROTO, 10022, u"Invalid argument"},
    {EDOM, 10022, u"Invalid argument"},
    {EIO, 10022, u"Invalid argument"},
    {ENOENT, 10022, u"Invalid argument"},
};

TEST_F(ClassicFault, OfEachNumberIsThrownWithItsCodeAndText) {
    const SocketPtr socket = Bound(StreamSocket());
    const std::u16string text = u"VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket";
    for (const Fault& fault : AllFaults) {
        const FailingCall fails(SystemCall::Listen, fault.system);
        ExpectThrownAndLogged(fault.Of(text), [&] { socket->Listen(); });
    }
    EXPECT_EQ(socket->Listen(), 0);
}

TEST_F(ClassicFault, OfCreatingIsThrown) {
    ExpectEach(SystemCall::Socket, u"VelNet::CreateSocket() - FAIL. The ::socket failed",
               [] { VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP); });
}

TEST_F(ClassicFault, OfBindingIsThrownAndLeavesTheSocketUnbound) {
    const SocketPtr socket = StreamSocket();
    ExpectEach(SystemCall::Bind,
               u"VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 127.0.0.1: 0",
               [&] { socket->Bind(LocalHost(), 0); });
    socket->Bind(LocalHost(), 0);
    EXPECT_EQ(socket->GetStatus(), VelNet::STATUS_NONE);
}

TEST_F(ClassicFault, OfConnectingIsThrownAndTheNextConnectSucceeds) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    const SocketPtr client = StreamSocket();
    ExpectEach(SystemCall::Connect,
               u"VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:" +
                   Widen(std::to_string(port)),
               [&] { client->Connect(LocalHost(), port); });
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_NONE);
    client->Connect(LocalHost(), port);
    ExpectExchange(*client, *Accepted(*listener));
}

TEST_F(ClassicFault, OfAcceptingIsThrownAndTheConnectionWaits) {
    const SocketPtr listener = Listening();
    const SocketPtr client = ConnectedTo(*listener);
    ExpectEach(SystemCall::Accept4,
               u"VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection", [&] {
                   VelNet::SocketAddress remote;
                   listener->Accept(remote);
               });
    ExpectExchange(*client, *Accepted(*listener));
}

TEST_F(ClassicFault, OfTransfersIsThrownAndTheConnectionLives) {
    const Connection connection = Connected();
    ExpectEach(SystemCall::Send, u"VelNet::SocketImpl::Send() - FAIL. The ::send failed",
               [&] { connection.client->Send("abc", 3); });
    ExpectEach(SystemCall::Recv, u"VelNet::SocketImpl::Receive() - FAIL. The ::recv failed",
               [&] { ReceiveSome(*connection.server); });
    ExpectExchange(*connection.client, *connection.server);
}

TEST_F(ClassicFault, OfTheConnectionsEndIsThrown) {
    constexpr Fault ends[] = {{ECONNRESET, 10054, u"Connection reset by peer"},
                              {ECONNABORTED, 10053, u"Software caused connection abort"},
                              {ETIMEDOUT, 10060, u"Connection timed out"}};
    for (const Fault& fault : ends) {
        const Connection connection = Connected();
        const FailingCall sends(SystemCall::Send, fault.system);
        const FailingCall receives(SystemCall::Recv, fault.system);
        ExpectThrownAndLogged(fault.Of(u"VelNet::SocketImpl::Send() - FAIL. The ::send failed"),
                              [&] { connection.client->Send("abc", 3); });
        ExpectThrownAndLogged(fault.Of(u"VelNet::SocketImpl::Receive() - FAIL. The ::recv failed"),
                              [&] { ReceiveSome(*connection.server); });
    }
}

// Required: both carry the label of Send.
TEST_F(ClassicFault, OfTheAddressesIsThrown) {
    const Connection connection = Connected();
    ExpectEach(SystemCall::Getsockname,
               u"VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed",
               [&] { connection.client->GetLocalAddress(); });
    ExpectEach(SystemCall::Getpeername,
               u"VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed",
               [&] { connection.client->GetRemoteAddress(); });
    EXPECT_EQ(connection.client->GetLocalAddress().GetOctets(), LocalHost());
}

TEST_F(ClassicFault, OfTheAddressesLeavesAConnectedSocketConnected) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    const SocketPtr client = StreamSocket();
    {
        const FailingCall fails(SystemCall::Getsockname, ENOBUFS);
        ExpectThrownAndLogged(
            SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed", 10055,
                          u"No buffer space available"),
            [&] { client->Connect(LocalHost(), port); });
    }
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_IDLE);
    ExpectExchange(*client, *Accepted(*listener));
}

// Required: a failure to set these is logged and not thrown, and the text for the send timeout
// names the receive timeout.
TEST_F(ClassicFault, OfAnOptionIsLoggedOnly) {
    const SocketPtr socket = DatagramSocket();
    for (const Fault& fault : Faults) {
        const FailingCall fails(SystemCall::Setsockopt, fault.system);
        socket->SetReceiveTimeout(5);
        socket->SetSendTimeout(5);
        socket->SetReuseAddress();
        const std::u16string tail = fault.Of(u"").text;
        EXPECT_EQ(
            Sink().Take(),
            (Records{
                {Error,
                 u"VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Receive "
                 u"Timeout" +
                     tail},
                {Error,
                 u"VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Send Timeout" + tail},
                {Error, u"VelNet::SocketImpl::SetReuseAddress() - FAIL. Cannot set Reuse Address" +
                            tail}}));
    }
}

TEST_F(ClassicFault, OfTheBlockingModeIsAnAnswerOnly) {
    const SocketPtr socket = StreamSocket();
    {
        const FailingCall fails(SystemCall::Ioctl, EIO, {.option = FIONBIO});
        EXPECT_FALSE(socket->SetNonBlocking());
    }
    EXPECT_EQ(Sink().Take(), Records{});
    EXPECT_TRUE(socket->SetNonBlocking());
}

TEST_F(ClassicFault, OfTheWaitingBytesCountsAsNone) {
    const Connection connection = Connected();
    SendAll(*connection.client, "abc");
    EXPECT_TRUE(Eventually([&] { return connection.server->IsDataAvailable(); }));
    {
        const FailingCall fails(SystemCall::Ioctl, EIO, {.option = FIONREAD});
        EXPECT_FALSE(connection.server->IsDataAvailable());
        EXPECT_EQ(connection.server->GetStatus(), VelNet::STATUS_IDLE);
    }
    EXPECT_EQ(Sink().Take(), Records{});
    EXPECT_EQ(connection.server->GetStatus(), VelNet::STATUS_DATA_PENDING);
}

TEST_F(ClassicFault, OfClosingIsNone) {
    for (const int error : {EIO, EINTR, ENOSPC}) {
        const SocketPtr socket = StreamSocket();
        EnableAllRouters();
        const HookedCall closes(SystemCall::Close, [error](const Call& call) {
            call.Make();
            return call.Fail(error);
        });
        socket->Close();
        EXPECT_FALSE(socket->IsValid());
        EXPECT_EQ(closes.Seen(), 1U);
        EXPECT_EQ(Sink().Take(),
                  (Records{{ConnectionTrace,
                            u"Disconnected, " + Endpoints("0.0.0.0", 0, "0.0.0.0", 0)}}));
    }
}

// What the system tells like the report of a lost datagram, but tells again and again.
constexpr unsigned int Endless = 10'000;
constexpr unsigned int Enough = 100;

TEST_F(ClassicFault, OfLookingForStrangersIsNoneIfItLasts) {
    const SocketPtr socket = Bound(DatagramSocket());
    const SocketPtr peer = Bound(DatagramSocket());
    const FailingCall fails(SystemCall::Recvfrom, ECONNREFUSED, {.count = Endless});
    socket->Connect(LocalHost(), PortOf(*peer));
    EXPECT_LT(fails.Seen(), Enough);
}

TEST_F(ClassicFault, OfLettingAStrangerGoIsNoneIfItLasts) {
    const SocketPtr socket = Bound(DatagramSocket());
    const SocketPtr peer = Bound(DatagramSocket());
    const SocketPtr stranger = DatagramSocket();
    stranger->Connect(LocalHost(), PortOf(*socket));
    ASSERT_EQ(stranger->Send("x", 1), 1);
    const FailingCall fails(SystemCall::Recv, ECONNREFUSED, {.count = Endless});
    socket->Connect(LocalHost(), PortOf(*peer));
    EXPECT_LT(fails.Seen(), Enough);
}

TEST_F(ClassicFault, OfSelectingIsThrown) {
    const SocketPtr socket = Bound(DatagramSocket());
    const std::unique_ptr<VelNet::SocketCollection, void (*)(VelNet::SocketCollection*)> sockets(
        VelNet::CreateSocketCollection(), [](VelNet::SocketCollection* all) { all->Destroy(); });
    sockets->Add(socket.Get(), VelNet::EVENT_READ);
    ExpectEach(SystemCall::Ppoll,
               u"VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed",
               [&] { sockets->Select(60); });
    EXPECT_EQ(sockets->GetCount(), 1U);
}

TEST_F(ClassicFault, OfASignalIsNone) {
    const Connection connection = Connected();
    const FailingCall sends(SystemCall::Send, EINTR, {.count = 3});
    const FailingCall receives(SystemCall::Recv, EINTR, {.count = 3});
    SendAll(*connection.client, "abc");
    EXPECT_EQ(ReceiveExactly(*connection.server, 3), "abc");
    EXPECT_EQ(Sink().Take(), Records{});
}

}  // namespace
}  // namespace Loopback

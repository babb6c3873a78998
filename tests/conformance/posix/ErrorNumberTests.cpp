// Which number a failing call of the system becomes, whatever the call, and what a number is
// called.
#include <Platform/System.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>

#include "conformance/Scene.h"
#include "conformance/SelectScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

struct Row {
    int system;
    int winsock;
};

// Of several numbers of the system that become one of Winsock's, the first says best what it is.
constexpr Row Rows[] = {
    {ENOTSOCK, 10038},      {EBADF, 10038},           {EACCES, 10013},
    {EPERM, 10013},         {EFAULT, 10014},          {EINVAL, 10022},
    {EMFILE, 10024},        {ENFILE, 10024},          {EAGAIN, 10035},
    {EWOULDBLOCK, 10035},   {EINPROGRESS, 10036},     {EALREADY, 10037},
    {EDESTADDRREQ, 10039},  {EMSGSIZE, 10040},        {EPROTOTYPE, 10041},
    {ENOPROTOOPT, 10042},   {EPROTONOSUPPORT, 10043}, {ESOCKTNOSUPPORT, 10044},
    {EOPNOTSUPP, 10045},    {ENOTSUP, 10045},         {ENOSYS, 10045},
    {EPFNOSUPPORT, 10046},  {EAFNOSUPPORT, 10047},    {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049}, {ENODEV, 10049},          {ENXIO, 10049},
    {ENETDOWN, 10050},      {ENETUNREACH, 10051},     {ENETRESET, 10052},
    {ECONNABORTED, 10053},  {EPIPE, 10053},           {ECONNRESET, 10054},
    {ENOBUFS, 10055},       {ENOMEM, 10055},          {ENOSR, 10055},
    {EISCONN, 10056},       {ENOTCONN, 10057},        {ESHUTDOWN, 10058},
    {ETOOMANYREFS, 10059},  {ETIMEDOUT, 10060},       {ETIME, 10060},
    {ECONNREFUSED, 10061},  {ELOOP, 10062},           {ENAMETOOLONG, 10063},
    {EHOSTDOWN, 10064},     {EHOSTUNREACH, 10065},    {ENONET, 10065},
    {ENOTEMPTY, 10066},     {EUSERS, 10068},          {EDQUOT, 10069},
    {ESTALE, 10070},        {EREMOTE, 10071},
};

constexpr int LastErrno = 200;  // more than the system has

// What is in no row is to no caller's use.
int WinsockNumberOf(int system) {
    for (const Row& row : Rows) {
        if (row.system == system) return row.winsock;
    }
    return 10022;
}

// Sockets in the states that the calls need.
struct Sockets {
    OwnedSocket fresh = NewStream();
    OwnedSocket bound = NewBoundStream();
    OwnedSocket datagram = NewBoundDatagram();
    OwnedSocket unbound = NewDatagram();
    Pair pair = NewConnectedPair();
};

int Control(const OwnedSocket& socket, unsigned int command) {
    unsigned int argument = 1;
    return Winsock::ioctlsocket(socket.Get(), command, &argument);
}

template <typename Query>
int Ask(Query query, const OwnedSocket& socket) {
    Winsock::AddressIpv4 address = {};
    int length = sizeof address;
    return query(socket.Get(), &address, &length);
}

int MakeSocket(const Sockets&) {
    const OwnedSocket socket(Winsock::socket(2, 1, 0));
    return socket.Get() == Winsock::InvalidSocket ? Winsock::SocketError : 0;
}

int WaitForOne(const Sockets& sockets) {
    Winsock::HandleSet read = SetOf({sockets.datagram.Get()});
    return Winsock::select(0, &read, nullptr, nullptr, &AtOnce);
}

// A call of Winsock's that fails with whatever a call of the system fails with.
struct PlainCall {
    const char* name;
    SystemCall fails;
    Occasion occasion;
    int (*call)(const Sockets& sockets);

    friend void PrintTo(const PlainCall& plain, std::ostream* stream) { *stream << plain.name; }
};

const PlainCall PlainCalls[] = {
    {"socket", SystemCall::Socket, {}, MakeSocket},
    {"bind",
     SystemCall::Bind,
     {},
     [](const Sockets& sockets) { return Bind(sockets.unbound, Loopback(0)); }},
    {"listen",
     SystemCall::Listen,
     {},
     [](const Sockets& sockets) { return Winsock::listen(sockets.bound.Get(), 1); }},
    {"getsockname",
     SystemCall::Getsockname,
     {},
     [](const Sockets& sockets) { return Ask(Winsock::getsockname, sockets.bound); }},
    {"getpeername",
     SystemCall::Getpeername,
     {},
     [](const Sockets& sockets) { return Ask(Winsock::getpeername, sockets.pair.client); }},
    {"receive timeout",
     SystemCall::Setsockopt,
     {.level = SOL_SOCKET, .option = SO_RCVTIMEO},
     [](const Sockets& sockets) {
         return SetOption(sockets.fresh, Winsock::OptionReceiveTimeout, 5);
     }},
    {"send timeout",
     SystemCall::Setsockopt,
     {.level = SOL_SOCKET, .option = SO_SNDTIMEO},
     [](const Sockets& sockets) {
         return SetOption(sockets.fresh, Winsock::OptionSendTimeout, 5);
     }},
    {"reuse of a stream's port",
     SystemCall::Setsockopt,
     {},
     [](const Sockets& sockets) {
         return SetOption(sockets.fresh, Winsock::OptionReuseAddress, 1);
     }},
    {"reuse of a datagram socket's port",
     SystemCall::Setsockopt,
     {},
     [](const Sockets& sockets) {
         return SetOption(sockets.unbound, Winsock::OptionReuseAddress, 1);
     }},
    {"broadcast",
     SystemCall::Setsockopt,
     {.level = SOL_SOCKET, .option = SO_BROADCAST},
     [](const Sockets& sockets) {
         return SetOption(sockets.datagram, Winsock::OptionBroadcast, 1);
     }},
    {"blocking mode",
     SystemCall::Ioctl,
     {.option = FIONBIO},
     [](const Sockets& sockets) { return Control(sockets.fresh, Winsock::CommandNonBlocking); }},
    {"waiting bytes of a datagram socket",
     SystemCall::Ioctl,
     {.option = FIONREAD},
     [](const Sockets& sockets) {
         return Control(sockets.datagram, Winsock::CommandBytesAvailable);
     }},
    {"waiting bytes of a stream",
     SystemCall::Ioctl,
     {.option = FIONREAD},
     [](const Sockets& sockets) {
         return Control(sockets.pair.client, Winsock::CommandBytesAvailable);
     }},
    {"select", SystemCall::Ppoll, {}, WaitForOne},
};

class ErrorNumberOfAPlainCall : public Started, public testing::WithParamInterface<PlainCall> {};

TEST_P(ErrorNumberOfAPlainCall, HasWinsocksNumberForEachOfTheSystem) {
    const PlainCall& plain = GetParam();
    const Sockets sockets;
    for (int error = 1; error <= LastErrno; ++error) {
        if (error == EINTR) continue;  // a signal's, which no caller is to meet
        const FailingCall fails(plain.fails, error, plain.occasion);
        EXPECT_TRUE(FailsWith(WinsockNumberOf(error), plain.call(sockets))) << strerror(error);
        EXPECT_GE(fails.Seen(), 1U);
    }
}

INSTANTIATE_TEST_SUITE_P(Calls, ErrorNumberOfAPlainCall, testing::ValuesIn(PlainCalls));

using ErrorNumberOfACaller = Started;

TEST_F(ErrorNumberOfACaller, IsRestoredAsItWasSaved) {
    const OwnedSocket fresh = NewStream();
    EXPECT_EQ(Winsock::listen(fresh.Get(), 1), Winsock::SocketError);
    errno = EAGAIN;
    const System::ErrorNumbers saved = System::SaveErrorNumbers();
    EXPECT_EQ(Winsock::closesocket(Winsock::InvalidSocket), Winsock::SocketError);
    errno = EPIPE;
    System::RestoreErrorNumbers(saved);
    const int restored = errno;
    EXPECT_EQ(restored, EAGAIN);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10022);
}

std::u16string Described(int error) {
    const System::WideUnits units = System::ErrorDescription(static_cast<unsigned int>(error));
    return {units.begin(), units.end()};
}

std::u16string Untranslated(int system) {
    const std::string text = ::strerrordesc_np(system);
    return {text.begin(), text.end()};
}

TEST(ErrorNumberDescription, OfTheSystemsNumbersIsTheSystems) {
    for (int error = 0; error <= LastErrno; ++error) {
        if (::strerrordesc_np(error) == nullptr) continue;
        EXPECT_EQ(Described(error), Untranslated(error)) << error;
    }
}

TEST(ErrorNumberDescription, OfWinsocksNumbersIsThatOfTheSystemsNumber) {
    EXPECT_EQ(Described(10004), Untranslated(EINTR));
    EXPECT_EQ(Described(10009), Untranslated(EBADF));
    int described = 0;
    for (const Row& row : Rows) {
        if (row.winsock == described) continue;
        described = row.winsock;
        EXPECT_EQ(Described(row.winsock), Untranslated(row.system)) << row.winsock;
    }
}

TEST(ErrorNumberDescription, OfWhatOnlyWinsockHasIsItsOwn) {
    EXPECT_EQ(Described(10091), u"Network subsystem not ready");
    EXPECT_EQ(Described(10092), u"Winsock version not supported");
    EXPECT_EQ(Described(10093), u"Winsock not started");
    EXPECT_EQ(Described(10109), u"Service not found");
    EXPECT_EQ(Described(11001), u"Host not found");
    EXPECT_EQ(Described(11002), u"Temporary failure in name resolution");
    EXPECT_EQ(Described(11003), u"Unrecoverable failure in name resolution");
    EXPECT_EQ(Described(11004), u"Host has no address of the requested kind");
}

TEST(ErrorNumberDescription, OfAnUnknownNumberNamesIt) {
    EXPECT_EQ(Described(9999), u"Unknown error 9999");
    EXPECT_EQ(Described(10000), u"Unknown error 10000");
    EXPECT_EQ(Described(10001), u"Unknown error 10001");
    EXPECT_EQ(Described(10067), u"Unknown error 10067");
    EXPECT_EQ(Described(12345), u"Unknown error 12345");
    EXPECT_EQ(Described(-1), u"Unknown error 4294967295");
}

}  // namespace
}  // namespace Conformance

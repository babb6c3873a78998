// What the tests of the extended socket share: sockets of either IP version on the local host.
//
// An extended socket is of the first family of this computer's name, so the computer is given a
// name of the wanted version where its own is of the other. Ports are the system's choice; an
// extended socket knows only the text that it was bound with, so the system tells them.
#pragma once

#include <VelNet/SocketXt.h>
#include <loopback/ExtendedFailures.h>
#include <loopback/LoopbackTest.h>
#include <loopback/Machine.h>

#include <iosfwd>
#include <string>
#include <string_view>

namespace Loopback {

using VelBase::ReturnString;
using VelNet::SocketXt;
using XtPtr = VelBase::ReturnPtrI<SocketXt>;

inline constexpr SocketXt::ADDR_FAMILY Ipv4 = SocketXt::FAMILY_IPV4;
inline constexpr SocketXt::ADDR_FAMILY Ipv6 = SocketXt::FAMILY_IPV6;

const char* LoopbackOf(SocketXt::ADDR_FAMILY family);
// An address that is no machine's.
const char* ForeignOf(SocketXt::ADDR_FAMILY family);

// Empty when this machine has no sockets of the version for us. Sockets have timeouts.
XtPtr StreamXt(SocketXt::ADDR_FAMILY family);
XtPtr DatagramXt(SocketXt::ADDR_FAMILY family);
// Bound to the loopback address.
XtPtr Bound(XtPtr socket);
XtPtr ListeningXt(SocketXt::ADDR_FAMILY family);

void SetPatience(SocketXt& socket);
std::string PortOf(const SocketXt& socket);
// This computer's name as the library sees it.
std::string ComputerName();

struct AcceptedXt {
    XtPtr socket;
    std::string host;
    std::string port;
};
// Waits for the connection if need be.
AcceptedXt Accept(SocketXt& listener);

struct XtConnection {
    XtPtr client;
    XtPtr server;
};
XtConnection ConnectedThrough(SocketXt& listener);

struct Received {
    std::string bytes;
    std::string host;
    std::string port;

    bool operator==(const Received&) const = default;
};
void PrintTo(const Received& received, std::ostream* stream);

Received ReceiveFrom(SocketXt& socket, int room = 4096);
int SendTo(SocketXt& socket, std::string_view bytes, const char* host, const std::string& port);

// The texts of a record's ends.
std::u16string TextEnds(const std::string& localHost, const std::string& localPort,
                        const std::string& remoteHost, const std::string& remotePort);

// The tests of both IP versions; skipped for a version that the machine does not have.
class ExtendedTest : public LoopbackTest,
                     public testing::WithParamInterface<SocketXt::ADDR_FAMILY> {
protected:
    void SetUp() override;

    static const char* Host() { return LoopbackOf(GetParam()); }
    static XtPtr Stream() { return StreamXt(GetParam()); }
    static XtPtr Datagrams() { return DatagramXt(GetParam()); }
    static XtPtr Listening() { return ListeningXt(GetParam()); }
    static XtConnection Connected() { return ConnectedThrough(*Listening()); }
};

// Why there is no socket of the version; empty when there is one.
std::string Lacking(SocketXt::ADDR_FAMILY family);

std::string NameOfVersion(const testing::TestParamInfo<SocketXt::ADDR_FAMILY>& info);

}  // namespace Loopback

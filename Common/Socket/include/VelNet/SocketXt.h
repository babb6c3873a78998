// The extended socket: IPv4 or IPv6, addressed by host and port strings.
#pragma once

#include "VelBase/ExceptionImpl.h"
#include "VelBase/Export.h"
#include "VelBase/ReturnPtrI.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Socket.h"

namespace VelNet {

// Addresses that are chosen by meaning instead of by a host string. The numbers differ from those
// of Address::SpecialAddress. Any value may be passed; one that has no name here stands for the
// empty string.
enum SpecialAddressKind : int {
    SPECIAL_ANY = 1,           // all addresses of the local host: "0.0.0.0" or "::0"
    SPECIAL_LOOPBACK = 2,      // the loopback address: "127.0.0.1" or "::1"
    SPECIAL_THIS_MACHINE = 3,  // the local host's name
    SPECIAL_BROADCAST = 4,     // "255.255.255.255", or "ff02::1", the IPv6 group of all nodes
};

// A handle of the system as a number; all bits are set if there is none.
using SOCKET_HANDLE = unsigned long long;

// One IPv4 or IPv6 socket, for streams or datagrams, created by CreateSocketXt or by Accept.
//
// Lifetime: reference counted. A socket that is still open when its last reference is released
// closes itself; a failure of that is logged and not thrown.
//
// Threads: a socket and its references belong to one thread at a time, with two exceptions. One
// thread may send while another receives, and Close may be called while other threads are blocked
// in an operation, SendTo and RecvFrom included (see Socket::Close).
//
// Hosts and ports are strings in the system's code page (UTF-8 on Linux). A host is a name, a
// numeric address, or empty for the local host; a port is a number or the name of a service. They
// are resolved on every call, for the socket's type and protocol, and the addresses are tried in
// the resolver's order until the system accepts one. A null pointer is passed to the resolver,
// which treats it as an omitted host or port.
//
// State: no operation checks what was called before; each one is passed to the system. An operation
// that fails leaves the socket unchanged unless it says otherwise.
//
// Failures: an operation logs its failure under "Error" and then throws Exception, with the code
// for the system's error number (Exception::GetSocketError). Besides what it lists under "Throws",
// an operation can throw these:
//   SOCKET_ERR_NOTSOCK         the socket is closed
//   SOCKET_ERR_HOST_NOT_FOUND, SOCKET_ERR_TRY_AGAIN, SOCKET_ERR_NO_RECOVERY, SOCKET_ERR_NO_DATA
//                              the host does not resolve
//   SOCKET_ERR_UNKNOWN         the service is unknown
//   SOCKET_ERR_AFNOSUPPORT     an IPv4 socket was given an IPv6 address
//   SOCKET_ERR_FAULT           an IPv6 socket was given an IPv4 address
//   std::bad_alloc             no memory
//   VelBase::ExceptionImpl<VelBase::Message>
//                              Bind, Connect, Accept, SendTo and RecvFrom, which start Winsock for
//                              themselves: that failed. Not logged; the message's identifier is the
//                              number that WSAStartup returned.
// A trace record that cannot be written is lost; the operation succeeds all the same. The socket
// layer must be up for as long as the socket is used (SocketInitialization). Without it,
// Winsock runs only during the operation that creates a socket, and closes the socket at its end.
//
// Differences from Socket:
// - Bind and Connect by Octets do nothing. Accept by SocketAddress returns an empty owner and
//   leaves its argument unchanged. GetLocalAddress and GetRemoteAddress return 0.0.0.0 and port 0:
//   this socket keeps strings, not addresses.
// - Close, the timeout setters and SetReuseAddress throw when they fail.
// - Receive's text for a closed connection names the local address. Its codes are Socket's: the
//   orderly end is SOCKET_ERR_UNKNOWN.
// - GetStatus treats a bound datagram socket as connected.
class VELSOCK_EXPORT SocketXt : public Socket {
public:
    // An IP version; FAMILY_UNKNOWN for every other address family.
    enum ADDR_FAMILY : int { FAMILY_UNKNOWN = 0, FAMILY_IPV4 = 1, FAMILY_IPV6 = 2 };

    // The buffer sizes, in bytes and with the terminator, that hold any host and any port string.
    static const unsigned int MAXHOST = 1025;
    static const unsigned int MAXPORT = 32;

    // Returns the IP version that the installation is configured for: FAMILY_IPV6 if the value
    // "IPVersion" of the key SOFTWARE\Corvane\Orrin Server in the local-machine settings is exactly
    // "6", FAMILY_IPV4 otherwise, also if the settings cannot be read. The library itself does not
    // use it.
    //
    // While the socket layer is up the value is read once and cached until the layer goes down;
    // otherwise it is read on every call. May be called from any thread.
    //
    // Throws: std::bad_alloc
    static ADDR_FAMILY GetIpVersion();

    // An interface without data: copying copies nothing.
    SocketXt();
    SocketXt(const SocketXt& other);
    SocketXt(SocketXt&& other) noexcept;
    SocketXt& operator=(const SocketXt& other);
    SocketXt& operator=(SocketXt&& other) noexcept;
    ~SocketXt() override;

    // What Socket does by Octets is without effect here; see above. The compiler warns of a call.
    [[deprecated("does nothing; bind by host and port")]] void Bind(
        Octets address, unsigned short port) override = 0;
    [[deprecated("does nothing; connect by host and port")]] void Connect(
        Octets address, unsigned short port) override = 0;
    [[deprecated("does nothing; accept with host and port")]] VelBase::ReturnPtrI<Socket> Accept(
        SocketAddress& remote) override = 0;
    [[deprecated("is always 0.0.0.0")]] SocketAddress GetLocalAddress() const override = 0;
    [[deprecated("is always 0.0.0.0")]] SocketAddress GetRemoteAddress() const override = 0;

    // Bind the socket to a local address and port; port "0" lets the system choose one. A special
    // address is one of the socket's own IP version.
    //
    // Throws: what Socket::Bind throws, for the last address that was tried
    virtual void Bind(SpecialAddressKind address, const char* port) = 0;
    virtual void Bind(const char* host, const char* port) = 0;

    // Accepts the next pending connection. Puts the new socket into the argument socket, in place
    // of what that held, and returns a reference to the argument; host and port receive the peer's
    // address in numeric form. If the system does not report that, they stay unchanged, which is
    // logged and not thrown. The new socket has no address strings: its trace records show empty
    // ones.
    //
    // Throws: SOCKET_ERR_WOULDBLOCK  no connection is pending, and the socket is non-blocking;
    //                                unlike Socket::Accept
    //         SOCKET_ERR_INVAL       the socket does not listen
    //         SOCKET_ERR_MFILE       the process, or the system, cannot open another socket
    //         std::bad_alloc         the connection stays pending
    virtual VelBase::ReturnPtrI<SocketXt>& Accept(VelBase::ReturnPtrI<SocketXt>& socket,
                                                  VelBase::ReturnString& host,
                                                  VelBase::ReturnString& port) = 0;

    // Connect to a host and port and write the "Connected" record.
    //
    // Non-blocking: an address that does not connect at once counts as failed, and the next one is
    // tried, so that the failure thrown need not be SOCKET_ERR_WOULDBLOCK.
    //
    // Required: from the start of the call, the trace records show the local host's name and port
    // "0" as the local address, also if the call fails.
    //
    // Throws: what Socket::Connect throws, for the last address that was tried
    virtual void Connect(SpecialAddressKind address, const char* port) = 0;
    virtual void Connect(const char* host, const char* port) = 0;

    // Returns the IP version that the socket was created for.
    virtual ADDR_FAMILY GetAddressFamily() const = 0;

    // Allows the socket to send to broadcast addresses (SO_BROADCAST); it cannot be revoked.
    //
    // Throws: SOCKET_ERR_NOPROTOOPT  the socket is a stream socket
    virtual void SetSocketForBroadcast() = 0;

    // Join (mode 0) or leave (mode 1) a multicast group on the system's default interface. Each
    // call leaks the list of addresses that the group resolved to.
    //
    // Throws: SOCKET_ERR_NOPROTOOPT    the mode is neither 0 nor 1
    //         SOCKET_ERR_ADDRNOTAVAIL  the socket is a member already, or there is no interface
    //         SOCKET_ERR_INVAL         the socket is not a member; the address is not a group or of
    //                                  the other IP version; the socket is a stream socket
    virtual void SetSocketForMulticast(SpecialAddressKind group, int mode) = 0;
    virtual void SetSocketForMulticast(const char* group, int mode) = 0;

    // Send one datagram of length bytes to the first of the host's addresses that the system
    // accepts, and return the number of bytes sent.
    //
    // Throws: SOCKET_ERR_MSGSIZE     the datagram is too long
    //         SOCKET_ERR_ACCES       a broadcast address, without SetSocketForBroadcast
    //         SOCKET_ERR_WOULDBLOCK  the send buffer is full, and the socket is non-blocking
    virtual int SendTo(const char* buffer, int length, SpecialAddressKind address,
                       const char* port) = 0;
    virtual int SendTo(const char* buffer, int length, const char* host, const char* port) = 0;

    // Receives one datagram and returns its length in bytes, 0 for an empty one. host and port
    // receive the sender's address in numeric form; if the system does not report that, they stay
    // unchanged, which is logged and not thrown.
    //
    // Throws: SOCKET_ERR_MSGSIZE     the datagram is longer than length; the buffer holds its
    //                                beginning, the rest is lost
    //         SOCKET_ERR_INVAL       the socket is not bound
    //         SOCKET_ERR_CONNRESET   a datagram that this socket sent earlier did not arrive
    //         SOCKET_ERR_TIMEDOUT    nothing came within the receive timeout
    //         SOCKET_ERR_WOULDBLOCK  nothing to receive, and the socket is non-blocking
    //         std::bad_alloc         no datagram has been taken; or one of these failures occurred,
    //                                but there is no memory for its text: a datagram that was too
    //                                long is lost then
    [[nodiscard]] virtual int RecvFrom(char* buffer, int length, VelBase::ReturnString& host,
                                       VelBase::ReturnString& port) = 0;

    // Returns the system handle, with all bits set if the socket is closed. The socket keeps
    // ownership.
    virtual SOCKET_HANDLE GetHandle() const = 0;

    // Returns the host string of a special address for that IP version; empty if there is none.
    //
    // Throws: std::bad_alloc
    virtual VelBase::ReturnString GetSpecialAddress(SpecialAddressKind kind,
                                                    ADDR_FAMILY family) const = 0;
};

// Creates a blocking socket. Its IP version is that of the first address of the local host's name
// whose version the system has sockets for. Type and protocol are as for CreateSocket.
//
// Throws: SOCKET_ERR_HOST_NOT_FOUND, SOCKET_ERR_TRY_AGAIN, SOCKET_ERR_NO_RECOVERY,
//         SOCKET_ERR_NO_DATA
//                           the local host's name does not resolve
//         SOCKET_ERR_MFILE  the process, or the system, cannot open another socket
//         VelBase::ExceptionImpl<VelBase::Message>  Winsock does not start
//         std::bad_alloc
[[nodiscard]] VELSOCK_EXPORT VelBase::ReturnPtrI<SocketXt> CreateSocketXt(
    Socket::SOCKET_TYPE type, Socket::SOCKET_PROTOCOL protocol);

// The same with an IP version of the caller's choice: the local host's name is not looked up. With
// FAMILY_UNKNOWN it is, as without the argument.
//
// Throws: SOCKET_ERR_AFNOSUPPORT  the system has no sockets of that version, or the value no name
//         the last three of those above
[[nodiscard]] VELSOCK_EXPORT VelBase::ReturnPtrI<SocketXt> CreateSocketXt(
    Socket::SOCKET_TYPE type, Socket::SOCKET_PROTOCOL protocol, SocketXt::ADDR_FAMILY family);

}  // namespace VelNet

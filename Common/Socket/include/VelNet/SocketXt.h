// The socket that speaks IPv4 or IPv6, by host and port text.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnPtrI.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Socket.h"

namespace VelNet {

// Addresses that have no text of their own. The numbers are this header's: Address::SpecialAddress
// counts differently. Any value may be passed; one without a name stands for the empty text.
enum SpecialAddressKind : int {
    SPECIAL_ANY = 1,           // every address of this machine
    SPECIAL_LOOPBACK = 2,      // this machine, by itself only
    SPECIAL_THIS_MACHINE = 3,  // this computer's name
    SPECIAL_BROADCAST = 4,     // IPv4's broadcast address, IPv6's group of all nodes
};

// A system handle as numbers go: all ones for none.
using SOCKET_HANDLE = unsigned long long;

// One stream or datagram socket of either IP version, made by CreateSocketXt or by Accept.
// Reference counted; a socket whose last reference goes while it is open closes itself, and what
// fails then is logged and dropped. A socket and its references are used by one thread at a time,
// except that one thread may send while another receives, and that Close ends what other threads
// wait in (see Socket::Close), SendTo and RecvFrom included.
//
// Hosts are names, numeric addresses, or empty for this machine; ports are numbers or names of
// services. Both are texts in the system's code page (UTF-8 on Linux), resolved anew on every call
// with the socket's type and protocol; the addresses are tried in the resolver's order until the
// system accepts one. An operation that is given a null text passes it to the resolver, which takes
// it for a missing one.
//
// Every operation goes to the system as it stands: none looks at what was called before. Failures
// are logged under "Error", then thrown as Exception with the code that the system's error number
// maps to (Exception::GetSocketError); a failure leaves the socket as it was, save where it says
// otherwise. The resolver's failures are SOCKET_ERR_HOST_NOT_FOUND, SOCKET_ERR_TRY_AGAIN,
// SOCKET_ERR_NO_RECOVERY, SOCKET_ERR_NO_DATA and SOCKET_ERR_UNKNOWN (an unknown service). An
// address of the other IP version is refused with SOCKET_ERR_AFNOSUPPORT by an IPv4 socket and with
// SOCKET_ERR_FAULT by an IPv6 one.
//
// Bind, Connect, Accept, SendTo and RecvFrom start Winsock for themselves while they run; when that
// fails they throw VelBase::ExceptionImpl<VelBase::Message> with the number as its identifier,
// which is not logged. The layer must be up all the time (SocketInitialization): without it a
// socket ends with the call that made it. All operations throw std::bad_alloc. A record that cannot
// be written is lost.
//
// Of the operations of Socket, Bind and Connect by Octets do nothing, Accept by SocketAddress
// returns an empty owner and leaves its argument alone, and GetLocalAddress and GetRemoteAddress
// return 0.0.0.0 and port 0: this socket keeps texts, not addresses. Others differ
// from Socket's: Close and the option setters throw when they fail, Receive's text for a closed
// connection names the local address, and a bound datagram socket counts as connected for
// GetStatus.
class VELSOCK_EXPORT SocketXt : public Socket {
public:
    // An IP version, or an address family that is neither.
    enum ADDR_FAMILY : int { FAMILY_UNKNOWN = 0, FAMILY_IPV4 = 1, FAMILY_IPV6 = 2 };

    // The room that texts of hosts and ports need at most, in bytes, with their terminators.
    static const unsigned int MAXHOST = 1025;
    static const unsigned int MAXPORT = 32;

    // The IP version that the installation is set to: FAMILY_IPV6 when the value "IPVersion" of the
    // key SOFTWARE\Corvane\Orrin Server in the local machine's settings is exactly "6", FAMILY_IPV4
    // in every other case, unreadable settings included. Read once while the socket layer is up and
    // remembered until it goes down; read on every call while it is down. May be called from any
    // thread. The library itself does not go by it. Throws std::bad_alloc.
    static ADDR_FAMILY GetIpVersion();

    // An interface without data: copying copies nothing.
    SocketXt();
    SocketXt(const SocketXt& other);
    SocketXt(SocketXt&& other) noexcept;
    SocketXt& operator=(const SocketXt& other);
    SocketXt& operator=(SocketXt&& other) noexcept;
    ~SocketXt() override;

    using Socket::Accept;
    using Socket::Bind;
    using Socket::Connect;

    // Takes the local address and port; port "0" lets the system choose. The special address is one
    // of the socket's own IP version. Throws SOCKET_ERR_ADDRINUSE, SOCKET_ERR_ACCES,
    // SOCKET_ERR_ADDRNOTAVAIL or SOCKET_ERR_INVAL like Socket::Bind, with the number for the last
    // address tried.
    virtual void Bind(SpecialAddressKind address, const char* port) = 0;
    virtual void Bind(const char* host, const char* port) = 0;

    // Takes the next pending connection into socket, after releasing what that held, and returns
    // socket. host and port become the peer's numeric texts; when the system cannot tell them they
    // stay as they were, which is logged and not thrown. The new socket knows no address texts: its
    // records show empty ones. A non-blocking socket without a pending connection throws
    // SOCKET_ERR_WOULDBLOCK, unlike Socket::Accept. Memory is taken before the connection is, which
    // std::bad_alloc leaves pending.
    virtual VelBase::ReturnPtrI<SocketXt>& Accept(VelBase::ReturnPtrI<SocketXt>& socket,
                                                  VelBase::ReturnString& host,
                                                  VelBase::ReturnString& port) = 0;

    // Connects and writes the "Connected" record. Required: from the first step on, the records
    // show this computer's name and port "0" as the local address, also when the connect fails.
    // Throws like Socket::Connect, with the number for the last address tried: on a non-blocking
    // socket, which goes on to the next address when one does not answer at once, that need not be
    // SOCKET_ERR_WOULDBLOCK.
    virtual void Connect(SpecialAddressKind address, const char* port) = 0;
    virtual void Connect(const char* host, const char* port) = 0;

    // The family of the addresses that the socket was made for.
    virtual ADDR_FAMILY GetAddressFamily() const = 0;

    // Allows sending to broadcast addresses. There is no way back. Throws
    // SOCKET_ERR_NOPROTOOPT for a stream socket.
    virtual void SetSocketForBroadcast() = 0;

    // Joins (mode 0) or leaves (mode 1) a multicast group on the system's default interface; every
    // other mode throws SOCKET_ERR_NOPROTOOPT. Throws SOCKET_ERR_ADDRNOTAVAIL for a group that was
    // joined before or when no interface can be had, SOCKET_ERR_INVAL for one that was never
    // joined, for an address that is no group or of the other IP version, and for a stream socket.
    // Each call keeps the memory of the addresses that it resolved.
    virtual void SetSocketForMulticast(SpecialAddressKind group, int mode) = 0;
    virtual void SetSocketForMulticast(const char* group, int mode) = 0;

    // Sends one datagram of length bytes to the first address of the host that the system accepts
    // and returns the number of bytes sent. Throws SOCKET_ERR_MSGSIZE for one that is too long,
    // SOCKET_ERR_ACCES for a broadcast address without SetSocketForBroadcast,
    // SOCKET_ERR_WOULDBLOCK on a non-blocking socket whose buffer is full.
    virtual int SendTo(const char* buffer, int length, SpecialAddressKind address,
                       const char* port) = 0;
    virtual int SendTo(const char* buffer, int length, const char* host, const char* port) = 0;

    // Receives one datagram and returns its number of bytes, 0 for an empty one. host and port
    // become the sender's numeric texts; when the system cannot tell them they stay as they were,
    // which is logged and not thrown. Throws SOCKET_ERR_MSGSIZE, with the buffer filled, for one
    // that is longer than length, SOCKET_ERR_INVAL on a socket that is not bound,
    // SOCKET_ERR_CONNRESET when a datagram sent before did not arrive, SOCKET_ERR_TIMEDOUT after
    // the receive time-out, SOCKET_ERR_WOULDBLOCK when nothing is waiting on a non-blocking socket.
    // Memory is taken before the datagram is, which std::bad_alloc leaves waiting; but where there
    // is none for a failure's text it stands for that, and what was too long is gone all the same.
    virtual int RecvFrom(char* buffer, int length, VelBase::ReturnString& host,
                         VelBase::ReturnString& port) = 0;

    // The system handle; all ones once the socket is closed. It stays the socket's.
    virtual SOCKET_HANDLE GetHandle() const = 0;

    // The text of a special address for the family, empty where there is none.
    virtual VelBase::ReturnString GetSpecialAddress(SpecialAddressKind kind,
                                                    ADDR_FAMILY family) const = 0;
};

// Makes a blocking socket for the first address family of this computer's name that the system has
// sockets for. Type and protocol as for CreateSocket. Throws Exception when the name does not
// resolve or no socket can be had, and VelBase::ExceptionImpl<VelBase::Message> when Winsock does
// not start; std::bad_alloc.
VELSOCK_EXPORT VelBase::ReturnPtrI<SocketXt> CreateSocketXt(Socket::SOCKET_TYPE type,
                                                            Socket::SOCKET_PROTOCOL protocol);

}  // namespace VelNet

// The IPv4 socket.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"
#include "VelBase/ReturnPtrI.h"
#include "VelNet/Octets.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

// What Socket::GetStatus answers.
enum SOCKET_STATUS : int {
    STATUS_NONE = 0,          // created, bound or closed
    STATUS_LISTENING = 1,     // listening
    STATUS_DATA_PENDING = 2,  // connected, with bytes to receive
    STATUS_IDLE = 3,          // connected, without
};

// One IPv4 stream or datagram socket, made by CreateSocket or by Accept. What is said here holds
// for these; SocketXt.h tells where an extended socket, which is a Socket too, differs. Reference
// counted; a
// socket whose last reference goes while it is open closes itself. A socket and its references are
// used by one thread at a time, except that one thread may send while another receives, and that
// Close may be called while other threads are inside Accept, Connect, Receive or Send.
//
// Every operation goes to the system as it stands: none looks at what was called before, and the
// system's answer decides. Failures throw Exception with the code that the system's error number
// maps to (Exception::GetSocketError), after the text was logged under "Error"; a failure leaves
// the socket as it was. Where an operation reports differently, it says so. All ports are in host
// byte order.
//
// Every operation that reaches the system throws SOCKET_ERR_NOTSOCK on a closed socket and
// SOCKET_ERR_NOTINITIALISED when the socket layer is down (SocketInitialization keeps it up); those
// that make an object or a failure text throw std::bad_alloc. A record that cannot be written is
// lost.
class VELSOCK_EXPORT Socket : public virtual VelBase::ReferenceCounted {
public:
    // Any value may be passed to CreateSocket; what is not named here becomes 0 and is left to the
    // system.
    enum SOCKET_TYPE : int { SOCKET_STREAM = 0, SOCKET_DATAGRAM = 1 };
    enum SOCKET_PROTOCOL : int { PROTOCOL_TCP = 0, PROTOCOL_UDP = 1 };

    // An interface without data: copying copies nothing.
    Socket();
    Socket(const Socket& other);
    Socket& operator=(const Socket& other);
    ~Socket() override;

    // True when both objects hold the same system handle. All closed sockets are the same, and a
    // socket of another implementation counts as closed.
    virtual bool IsSameSocket(const Socket& other) const = 0;

    // Makes the socket non-blocking, for good: there is no way back. True when the system accepted
    // that; a failure is neither logged nor thrown.
    virtual bool SetNonBlocking() = 0;

    // True from creation until Close.
    virtual bool IsValid() const = 0;

    // Takes the local address and port; port 0 lets the system choose. Throws SOCKET_ERR_ADDRINUSE
    // for a taken port (SOCKET_ERR_ACCES when only this socket reuses addresses, or the port needs
    // a privilege), SOCKET_ERR_ADDRNOTAVAIL for an address that is not this machine's,
    // SOCKET_ERR_INVAL for a bound socket.
    virtual void Bind(Octets address, unsigned short port) = 0;

    // Makes the socket wait for connections and returns 0. Two may be pending at a time; what the
    // system does with a third is its own affair. Throws SOCKET_ERR_INVAL for a socket that is not
    // bound, SOCKET_ERR_ISCONN for a connected one, SOCKET_ERR_OPNOTSUPP for a datagram socket.
    virtual int Listen() = 0;

    // Connects, learns both addresses from the system and writes the "Connected" record. When the
    // system made the connection but cannot tell an address, the failure of GetLocalAddress or
    // GetRemoteAddress passes out and the socket stays connected. Throws SOCKET_ERR_CONNREFUSED,
    // SOCKET_ERR_TIMEDOUT, SOCKET_ERR_NETUNREACH or SOCKET_ERR_HOSTUNREACH when the peer cannot be
    // reached, SOCKET_ERR_ADDRNOTAVAIL for 0.0.0.0 and port 0, SOCKET_ERR_ISCONN for a connected
    // socket, SOCKET_ERR_INVAL for a listening one.
    //
    // A non-blocking socket whose connection is not made at once throws SOCKET_ERR_WOULDBLOCK. The
    // system goes on connecting; the socket can send and receive once it is connected, which a
    // further Connect tells by SOCKET_ERR_ISCONN (SOCKET_ERR_ALREADY until then). GetStatus and the
    // records do not learn of it: they show an unconnected socket and no addresses.
    virtual void Connect(Octets address, unsigned short port) = 0;

    // Takes the next pending connection, stores the peer's address in remote and writes the
    // "Connected" record. The new socket is blocking or not as this one is. Empty, with remote
    // untouched and nothing logged, when this socket is non-blocking and no connection is pending.
    // Throws SOCKET_ERR_INVAL for a socket that does not listen, SOCKET_ERR_MFILE when no more
    // sockets can be had. Memory is taken before the connection is, which std::bad_alloc leaves
    // pending, save what its two addresses need: when there is none for these, it is closed.
    // Required: the new socket records this socket's own local address, 0.0.0.0 for a listener on
    // all addresses.
    virtual VelBase::ReturnPtrI<Socket> Accept(SocketAddress& remote) = 0;

    // Limits how long Receive and Send block; milliseconds, 0 and 4294967295 for no limit. A
    // transfer that takes longer throws SOCKET_ERR_TIMEDOUT. Required: a failure to set these is
    // logged and not thrown, and the text for the send time-out names SetReceiveTimeout.
    virtual void SetReceiveTimeout(unsigned int milliseconds) = 0;
    virtual void SetSendTimeout(unsigned int milliseconds) = 0;

    // Allows to bind to an address that is in use. There is no way back. A failure is logged and
    // not thrown.
    virtual void SetReuseAddress() = 0;

    // Closes the socket, writes the "Disconnected" record and forgets both addresses. Never throws:
    // a failure is logged, and the socket is closed all the same. Closing a closed socket logs a
    // failure and writes another record.
    //
    // An operation that waits on the socket in another thread ends: it throws SOCKET_ERR_INTR with
    // its own failure text. This is how a thread that waits for connections is stopped. The peer
    // sees no more of it than of any close. When Close returns, the port is free and the other
    // threads have left the system, but they may still be on their way out of their operations: do
    // not take or release references before they have come back. An operation that completes at the
    // very moment of Close may, while packet records are switched on, read the addresses that Close
    // resets: with these records, end the threads that transfer before the socket is closed.
    virtual void Close() = 0;

    // Receives once, up to length bytes, and returns their number, at least 1. Throws
    // SOCKET_ERR_UNKNOWN when the system received no byte: the peer of a stream has closed the
    // connection, a datagram was empty, or length is 0. The socket stays open. A datagram that is
    // longer than length throws SOCKET_ERR_MSGSIZE with the buffer filled. Throws
    // SOCKET_ERR_CONNRESET or SOCKET_ERR_CONNABORTED when the connection was lost,
    // SOCKET_ERR_NOTCONN when there is none, SOCKET_ERR_TIMEDOUT after the receive time-out.
    // Where there is no memory for a failure's text, std::bad_alloc stands for it: what was empty
    // or too long is gone all the same.
    // Required: unlike Send, a non-blocking socket with nothing to receive throws
    // SOCKET_ERR_WOULDBLOCK.
    virtual int Receive(char* buffer, int length) = 0;

    // Sends once and returns how many bytes the system took, which may be fewer than length: the
    // caller sends the rest. Returns 0, with nothing logged, when the socket is non-blocking and
    // the call would block.
    virtual int Send(const char* buffer, int length) = 0;

    // True when bytes are waiting. A failure counts as none; it is neither logged nor thrown.
    virtual bool IsDataAvailable() const = 0;

    // The addresses as the system tells them at this moment. Required: their failure texts carry
    // the label of Send.
    virtual SocketAddress GetLocalAddress() const = 0;
    virtual SocketAddress GetRemoteAddress() const = 0;

    // A SOCKET_STATUS. A connected socket is asked for waiting bytes (IsDataAvailable).
    virtual int GetStatus() const = 0;
};

// Makes a blocking IPv4 socket without any option set. The pair of type and protocol is not
// checked: the system decides, and refuses a pair that does not fit with a number that is not in
// the table of errors (SOCKET_ERR_UNKNOWN). Throws SOCKET_ERR_MFILE when no more sockets can be
// had; std::bad_alloc.
VELSOCK_EXPORT VelBase::ReturnPtrI<Socket> CreateSocket(Socket::SOCKET_TYPE type,
                                                        Socket::SOCKET_PROTOCOL protocol);

}  // namespace VelNet

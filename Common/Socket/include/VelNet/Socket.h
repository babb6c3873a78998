// The IPv4 socket.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"
#include "VelBase/ReturnPtrI.h"
#include "VelNet/Exception.h"
#include "VelNet/Octets.h"
#include "VelNet/SocketAddress.h"
#include "VelNet/SocketInitialization.h"

namespace VelNet {

// What Socket::GetStatus returns.
enum SOCKET_STATUS : int {
    STATUS_NONE = 0,          // created, bound or closed
    STATUS_LISTENING = 1,     // listening
    STATUS_DATA_PENDING = 2,  // connected, with bytes to receive
    STATUS_IDLE = 3,          // connected, without bytes to receive
};

// One IPv4 stream or datagram socket, created by CreateSocket or by Accept. SocketXt derives from
// this class; SocketXt.h says where an extended socket behaves differently.
//
// Lifetime: reference counted. A socket that is still open when its last reference is released
// closes itself.
//
// Threads: a socket and its references belong to one thread at a time, with two exceptions. One
// thread may send while another receives, and Close may be called while other threads are inside
// Accept, Connect, Receive or Send.
//
// State: no operation checks what was called before; each one is passed to the system, whose answer
// decides. An operation that fails leaves the socket unchanged unless it says otherwise.
//
// Failures: unless an operation says otherwise, it logs its failure under "Error" and then throws
// Exception, with the code for the system's error number (Exception::GetSocketError). Besides
// what it lists under "Throws", such an operation can throw these:
//   SOCKET_ERR_NOTSOCK         the socket is closed
//   SOCKET_ERR_NOTINITIALISED  the socket layer is down (see SocketInitialization)
//   std::bad_alloc             no memory for a returned object or for the failure's text
//
// Records: connections and transfers are also written to the log while its routers are switched on
// (VelLog/LogControl.h). A record that cannot be written is lost; the operation succeeds all the
// same.
//
// "Required" marks behaviour that may look like a mistake but that clients rely on.
class VELSOCK_EXPORT Socket : public virtual VelBase::ReferenceCounted {
public:
    // For CreateSocket. Any value may be passed; one that has no name here is passed to the system
    // as 0.
    enum SOCKET_TYPE : int { SOCKET_STREAM = 0, SOCKET_DATAGRAM = 1 };
    enum SOCKET_PROTOCOL : int { PROTOCOL_TCP = 0, PROTOCOL_UDP = 1 };

    // An interface without data: copying copies nothing.
    Socket();
    Socket(const Socket& other);
    Socket& operator=(const Socket& other);
    ~Socket() override;

    // Returns whether both objects hold the same system handle. All closed sockets are the same,
    // and an object of a class from outside the library counts as closed.
    virtual bool IsSameSocket(const Socket& other) const = 0;

    // Makes the socket non-blocking; it cannot be made blocking again. Returns whether the system
    // accepted that. Does not throw and does not log.
    virtual bool SetNonBlocking() = 0;

    // Returns true from creation until Close.
    virtual bool IsValid() const = 0;

    // Binds the socket to a local address and port; port 0 lets the system choose one. The port is
    // in host byte order.
    //
    // Throws: SOCKET_ERR_ADDRINUSE     the port is taken
    //         SOCKET_ERR_ACCES         the port is taken, and SetReuseAddress was called for this
    //                                  socket only; or the port needs a privilege
    //         SOCKET_ERR_ADDRNOTAVAIL  the address does not belong to the local host
    //         SOCKET_ERR_INVAL         the socket is bound already
    virtual void Bind(Octets address, unsigned short port) = 0;

    // Lets the socket accept connections, with a backlog of two, and returns 0. The system decides
    // what happens to a third pending connection.
    //
    // Throws: SOCKET_ERR_INVAL      the socket is not bound
    //         SOCKET_ERR_ISCONN     the socket is connected
    //         SOCKET_ERR_OPNOTSUPP  the socket is a datagram socket
    virtual int Listen() = 0;

    // Connects to a remote address and port (host byte order), asks the system for the addresses of
    // both ends and writes the "Connected" record. If the connection is established but the system
    // does not report an address, throws like GetLocalAddress; the socket stays connected then.
    //
    // Non-blocking: throws SOCKET_ERR_WOULDBLOCK unless the connection is established at once, and
    // the system continues to connect. Call Connect again to learn the outcome: it throws
    // SOCKET_ERR_ALREADY while the attempt lasts and SOCKET_ERR_ISCONN once the socket is connected
    // and can send and receive. GetStatus and the trace records are not updated: they keep showing
    // an unconnected socket without addresses.
    //
    // Throws: SOCKET_ERR_CONNREFUSED   nobody listens there
    //         SOCKET_ERR_TIMEDOUT      no answer
    //         SOCKET_ERR_NETUNREACH, SOCKET_ERR_HOSTUNREACH  no route
    //         SOCKET_ERR_ADDRNOTAVAIL  the address is 0.0.0.0, or the port 0
    //         SOCKET_ERR_ISCONN        the socket is connected
    //         SOCKET_ERR_INVAL         the socket listens
    virtual void Connect(Octets address, unsigned short port) = 0;

    // Accepts the next pending connection, stores the peer's address in remote and writes the
    // "Connected" record. The new socket is blocking or non-blocking like this one. Returns an
    // empty owner, leaves remote unchanged and logs nothing if this socket is non-blocking and no
    // connection is pending.
    //
    // Required: the new socket's local address, in trace records, is the one that this socket
    // listens on: 0.0.0.0 for a listener on all addresses.
    //
    // Throws: SOCKET_ERR_INVAL  the socket does not listen
    //         SOCKET_ERR_MFILE  the process, or the system, cannot open another socket
    //         std::bad_alloc    the connection stays pending
    [[nodiscard]] virtual VelBase::ReturnPtrI<Socket> Accept(SocketAddress& remote) = 0;

    // Set how long Receive and Send may block, in milliseconds; 0 and 4294967295 mean no limit. A
    // transfer that takes longer throws SOCKET_ERR_TIMEDOUT.
    //
    // Required: a failure is logged and not thrown, and the failure text of SetSendTimeout names
    // SetReceiveTimeout.
    virtual void SetReceiveTimeout(unsigned int milliseconds) = 0;
    virtual void SetSendTimeout(unsigned int milliseconds) = 0;

    // Lets Bind take an address that is in use (Winsock's SO_REUSEADDR); it cannot be revoked. A
    // failure is logged and not thrown.
    virtual void SetReuseAddress() = 0;

    // Closes the socket, writes the "Disconnected" record and clears both addresses. Does not
    // throw: a failure is logged, and the socket counts as closed. Closing a closed socket logs a
    // failure and writes another record.
    //
    // Other threads: an operation that is blocked on this socket in another thread throws
    // SOCKET_ERR_INTR, with its own failure text; this is how to stop a thread that waits in
    // Accept. To the peer it is a close like any other. When Close returns, the port is free and
    // those threads have left the system's calls, but they may not have returned from their
    // operations yet: neither copy nor release references to the socket before they have. While
    // packet records are switched on, an operation that completes during Close may read the
    // addresses that Close clears, which is a data race: with these records on, stop the threads
    // that send and receive before closing.
    virtual void Close() = 0;

    // Receives once, up to length bytes, and returns how many there were: at least 1.
    //
    // The peer's orderly end of a stream is SOCKET_ERR_UNKNOWN. With a length above 0 that code
    // means nothing else on a stream socket: all errors that the system's recv is documented to
    // report have codes of their own. After any failure the socket remains open.
    //
    // Required: unlike Send, throws SOCKET_ERR_WOULDBLOCK when the call would block.
    //
    // Throws: SOCKET_ERR_UNKNOWN      no byte was received: the peer has closed the stream, or shut
    //                                 down its sending side, and everything it sent has been read;
    //                                 the datagram was empty; or length is 0
    //         SOCKET_ERR_WOULDBLOCK   nothing to receive, and the socket is non-blocking
    //         SOCKET_ERR_TIMEDOUT     nothing came within the receive timeout
    //         SOCKET_ERR_MSGSIZE      the datagram is longer than length; the buffer holds its
    //                                 beginning, the rest is lost
    //         SOCKET_ERR_CONNRESET, SOCKET_ERR_CONNABORTED  the connection was lost
    //         SOCKET_ERR_NOTCONN      the stream socket is not connected
    //         std::bad_alloc          one of these failures, but no memory for its text; a datagram
    //                                 that was empty or too long is lost all the same
    [[nodiscard]] virtual int Receive(char* buffer, int length) = 0;

    // Sends once and returns how many bytes the system accepted; if fewer than length, the caller
    // sends the rest. Returns 0 and logs nothing if the socket is non-blocking and the call would
    // block.
    //
    // Throws: SOCKET_ERR_TIMEDOUT  the system accepted nothing within the send timeout
    //         SOCKET_ERR_CONNRESET, SOCKET_ERR_CONNABORTED  the connection was lost
    //         SOCKET_ERR_NOTCONN   the socket is not connected
    [[nodiscard]] virtual int Send(const char* buffer, int length) = 0;

    // Returns whether there are bytes to receive; false if the system cannot tell. Does not throw
    // and does not log.
    virtual bool IsDataAvailable() const = 0;

    // Ask the system for the socket's own address, and for the peer's.
    //
    // Required: the failure texts of both name Send as the operation that failed.
    //
    // Throws: SOCKET_ERR_INVAL    GetLocalAddress: the socket is not bound
    //         SOCKET_ERR_NOTCONN  GetRemoteAddress: the socket is not connected
    virtual SocketAddress GetLocalAddress() const = 0;
    virtual SocketAddress GetRemoteAddress() const = 0;

    // Returns a SOCKET_STATUS. A connected socket is asked for bytes to receive (IsDataAvailable).
    virtual int GetStatus() const = 0;
};

// Creates a blocking IPv4 socket with the system's default options.
//
// The library does not check whether type and protocol fit each other. The system refuses a pair
// that does not; that is SOCKET_ERR_UNKNOWN, since the table of errors lacks the system's number.
//
// Throws: SOCKET_ERR_MFILE  the process, or the system, cannot open another socket
//         std::bad_alloc
[[nodiscard]] VELSOCK_EXPORT VelBase::ReturnPtrI<Socket> CreateSocket(
    Socket::SOCKET_TYPE type, Socket::SOCKET_PROTOCOL protocol);

}  // namespace VelNet

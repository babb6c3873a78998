// A set of sockets to wait on.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnPtrI.h"
#include "VelNet/Socket.h"

namespace VelNet {

// What an entry of a SocketCollection waits for.
enum SOCKET_EVENT : int {
    EVENT_ACCEPT = 0,  // a connection is pending on a listening socket
    EVENT_READ = 1,    // bytes are waiting on a connected socket
    EVENT_WRITE = 2,   // the socket can send
    EVENT_CLOSE = 3,   // the peer has closed the connection, and all its bytes have been read
};

// A list of sockets, each with the event that it waits for; meant for the sockets of CreateSocket,
// not those of CreateSocketXt. A socket may have several entries. Entries are compared by system
// handle: two objects with the same handle are the same socket, and so are all closed sockets.
//
// Lifetime: created by CreateSocketCollection or by Select, and not reference counted: the caller
// destroys it with Destroy. It holds a reference to each entry's socket, so that a registered
// socket stays open.
//
// Threads: a collection belongs to one thread at a time, the one that uses its sockets.
//
// Sockets that are passed in must not be null.
//
// Required: the class declares no destructor. Only Destroy may destroy a collection. That such a
// class is not deleted through a pointer to it is what g++ and clang++ warn of here.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif
class VELSOCK_EXPORT SocketCollection {
public:
    // An interface without data: copying copies nothing.
    SocketCollection();
    SocketCollection(const SocketCollection& other);
    SocketCollection(SocketCollection&& other) noexcept;
    SocketCollection& operator=(const SocketCollection& other);
    SocketCollection& operator=(SocketCollection&& other) noexcept;

    // Appends an entry. Any event may be passed; one that is not a SOCKET_EVENT is never waited
    // for. A failure leaves the collection unchanged.
    //
    // Throws: std::bad_alloc
    //         std::length_error  "list<T> too long": the list cannot be any longer
    virtual void Add(Socket* socket, int event) = 0;

    // Removes every entry of that socket and event, if there is any.
    virtual void Remove(Socket* socket, int event) = 0;

    // Returns the number of entries.
    virtual unsigned int GetCount() const = 0;

    // Return the socket and the event of the entry at an index from 0 (the oldest entry) to
    // GetCount() - 1. The index is not checked; any other is undefined behaviour.
    virtual VelBase::ReturnPtrI<Socket> GetSocket(unsigned int index) const = 0;
    virtual int GetEvent(unsigned int index) const = 0;

    // Returns the index of the first entry of that socket and event, or 0xFFFFFFFF if there is
    // none.
    virtual unsigned int Find(Socket* socket, int event) const = 0;

    // Waits until the event of at least one entry has occurred, at most for the given number of
    // seconds; 0 polls. Returns the entries whose events have occurred, in their order, as a new
    // collection that the caller destroys, or null if the time elapsed first. The result can be
    // empty: then a socket is ready, but not for the event that it is registered for. If there is
    // nothing to wait for, sleeps for the whole time and returns null.
    //
    // At most 64 different sockets are waited on for reading (accept, read and close together) and
    // 64 for writing. Further ones are never reported, and nothing tells that. A program with more
    // gives each 64 a collection and a thread of their own (examples/ManyClients.cpp).
    //
    // A failure is logged under "Error" and leaves the collection unchanged.
    //
    // Throws: SOCKET_ERR_NOTSOCK  a socket is closed
    //         SOCKET_ERR_INTR     another thread closed a socket during the wait
    //         any other code of Exception with which the system fails to wait
    //         std::bad_alloc
    [[nodiscard]] virtual SocketCollection* Select(unsigned int seconds) = 0;

    // Destroys the collection and releases its references to the sockets.
    virtual void Destroy() = 0;
};
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

// Creates an empty collection. Throws std::bad_alloc.
[[nodiscard]] VELSOCK_EXPORT SocketCollection* CreateSocketCollection();

}  // namespace VelNet

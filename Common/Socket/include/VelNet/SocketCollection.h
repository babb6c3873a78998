// Sockets that are waited on together.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnPtrI.h"
#include "VelNet/Socket.h"

namespace VelNet {

// What an entry of a SocketCollection waits for.
enum SOCKET_EVENT : int {
    EVENT_ACCEPT = 0,  // a connection is pending on a listening socket
    EVENT_READ = 1,    // bytes are waiting on a connected socket
    EVENT_WRITE = 2,   // the system takes bytes
    EVENT_CLOSE = 3,   // the peer has closed the connection, and all its bytes have been read
};

// A list of sockets, meant for classic ones, each entry with the event that it waits for. The same
// socket may stand in several entries. Entries match by system handle: two objects that share one
// are the same socket, and so are all closed sockets.
//
// Made by CreateSocketCollection or by Select; not reference counted: whoever got it ends it with
// Destroy. It holds a reference to each entry's socket, which stays open while it is registered. A
// collection is used by one thread at a time, the thread that uses its sockets.
//
// Required: the class declares no destructor. Only Destroy may end a collection.
class VELSOCK_EXPORT SocketCollection {
public:
    SocketCollection();
    SocketCollection(const SocketCollection& other);
    SocketCollection(SocketCollection&& other) noexcept;
    SocketCollection& operator=(const SocketCollection& other);
    SocketCollection& operator=(SocketCollection&& other) noexcept;

    // Appends an entry. No socket here or below may be null. Any event may be passed: one that is
    // no SOCKET_EVENT is never waited for. Throws std::bad_alloc, and std::length_error "list<T>
    // too long" when no entry more can be had; the collection is as before then.
    virtual void Add(Socket* socket, int event) = 0;

    // Takes out every entry of that socket and event; none is no failure.
    virtual void Remove(Socket* socket, int event) = 0;

    virtual unsigned int GetCount() const = 0;

    // The entry at an index from 0, the oldest, to GetCount() - 1. The index is not checked.
    virtual VelBase::ReturnPtrI<Socket> GetSocket(unsigned int index) const = 0;
    virtual int GetEvent(unsigned int index) const = 0;

    // The index of the first entry of that socket and event; 0xFFFFFFFF when there is none.
    virtual unsigned int Find(Socket* socket, int event) const = 0;

    // Waits at most so many seconds, 0 for not at all, until an entry's event has come. Returns the
    // entries whose events have come, in their order, as a collection that the caller ends, or null
    // when the time was over first. The result may be empty: a socket is ready, but not for what it
    // is registered for. With nothing to wait for it sleeps the whole time.
    //
    // At most 64 different sockets are waited for to read (accept, read and close together) and as
    // many to write; further ones are never found ready. Throws Exception when the system cannot
    // wait, as for a closed socket (SOCKET_ERR_NOTSOCK) or one that another thread closes meanwhile
    // (SOCKET_ERR_INTR), logged under "Error"; the collection is as before then. Throws
    // std::bad_alloc.
    virtual SocketCollection* Select(unsigned int seconds) = 0;

    // Ends the collection and releases its sockets.
    virtual void Destroy() = 0;
};

// An empty collection. Throws std::bad_alloc.
VELSOCK_EXPORT SocketCollection* CreateSocketCollection();

}  // namespace VelNet

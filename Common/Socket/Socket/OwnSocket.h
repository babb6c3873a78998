// Distinguishes the library's own sockets from a client's implementations of the interfaces.
#pragma once

#include "Platform/Winsock.h"

namespace VelNet {

// A base of every socket class of this library, beside its public interface: clients see neither
// its slot nor its size.
class OwnSocket {
public:
    // The system handle; InvalidSocket once the socket is closed. An override of an operation of
    // the public interface does not change it.
    virtual Winsock::Handle Handle() const noexcept = 0;

protected:
    OwnSocket() = default;
    OwnSocket(const OwnSocket&) = default;
    OwnSocket& operator=(const OwnSocket&) = default;
    ~OwnSocket() = default;
};

}  // namespace VelNet

// Distinguishes the library's own sockets from a client's implementations of the interfaces.
#pragma once

#include "Platform/Winsock.h"

namespace VelNet {

// A base of every socket class of this library, beside its public interface: clients see neither
// its size nor where it lies.
class OwnSocket {
public:
    // The system handle; InvalidSocket once the socket is closed. An override of an operation of
    // the public interface does not change it.
    Winsock::Handle Handle() const noexcept { return handle_; }

protected:
    explicit OwnSocket(Winsock::Handle handle) noexcept : handle_(handle) {}
    ~OwnSocket() = default;

    Winsock::Handle handle_;
};

}  // namespace VelNet

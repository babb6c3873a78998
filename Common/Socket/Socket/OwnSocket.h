// Distinguishes the library's own sockets from a client's implementations of the interfaces.
#pragma once

#include "Platform/Winsock.h"

#include <atomic>

namespace VelNet {

// A base of every socket class of this library, beside its public interface: clients see neither
// its size nor where it lies.
class OwnSocket {
public:
    // The system handle; InvalidSocket once the socket is closed. An override of an operation of
    // the public interface does not change it.
    Winsock::Handle Handle() const noexcept { return handle_; }

    // The number of the socket in its records, from 1. It is given at the first call, so that
    // sockets without records use up none. May be called on several threads at once.
    unsigned int ConnectionNumber() const noexcept {
        const unsigned int number = connectionNumber_.load(std::memory_order_relaxed);
        return number != 0 ? number : TakeConnectionNumber();
    }

protected:
    explicit OwnSocket(Winsock::Handle handle) noexcept : handle_(handle) {}
    ~OwnSocket() = default;

    Winsock::Handle handle_;

private:
    unsigned int TakeConnectionNumber() const noexcept;

    // Of 32 bits: they fit beside what the derived classes have, where 64 would make each socket
    // larger.
    mutable std::atomic<unsigned int> connectionNumber_ = 0;
};

}  // namespace VelNet

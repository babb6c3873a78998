// Resolves and tries the addresses for an operation of the extended socket.
#pragma once

#include "Socket/AddressList.h"
#include "Socket/NarrowText.h"
#include "Socket/SocketXtFailure.h"

namespace VelNet {

// The name and description of an operation in its failure texts, and the socket that these are
// recorded of.
struct SocketXtOperation {
    const char* function;
    const char* description;
    const OwnSocket* socket = nullptr;
};

// Resolves the strings and calls attempt with each address until it succeeds. Throws if they do not
// resolve; the caller decides what any other outcome means.
template <class Attempt>
AddressWalk TryResolved(const SocketXtOperation& operation, const char* host, const char* port,
                        const Winsock::AddressInfo& hints, Attempt attempt) {
    const AddressWalk walk = TryAddresses(host, port, hints, attempt);
    if (walk.outcome == AddressWalk::NotResolved) {
        ThrowSocketXtError({operation.function, operation.description, "::getaddrinfo", walk.error,
                            OrEmpty(host), OrEmpty(port)},
                           operation.socket);
    }
    return walk;
}

}  // namespace VelNet

// The addresses that an operation of the extended socket goes to.
#pragma once

#include "Socket/AddressList.h"
#include "Socket/NarrowText.h"
#include "Socket/SocketXtFailure.h"

namespace VelNet {

// How an operation is named in its failures.
struct SocketXtOperation {
    const char* function;
    const char* description;
};

// Gives each address of the texts to the attempt until that succeeds. Texts that do not resolve end
// the operation; how all else is to be taken is the operation's own affair.
template <class Attempt>
AddressWalk TryResolved(const SocketXtOperation& operation, const char* host, const char* port,
                        const Winsock::AddressInfo& hints, Attempt attempt) {
    const AddressWalk walk = TryAddresses(host, port, hints, attempt);
    if (walk.outcome == AddressWalk::NotResolved) {
        ThrowSocketXtError({operation.function, operation.description, "::getaddrinfo", walk.error,
                            OrEmpty(host), OrEmpty(port)});
    }
    return walk;
}

}  // namespace VelNet

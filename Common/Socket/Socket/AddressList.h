// The addresses of a host and port text, tried one after the other.
#pragma once

#include "Platform/Winsock.h"

namespace VelNet {

// Gives a list back to the system at the end of the scope, an empty one too.
class AddressListOwner {
public:
    explicit AddressListOwner(Winsock::AddressInfo* list) noexcept : list_(list) {}
    ~AddressListOwner() { Winsock::freeaddrinfo(list_); }
    AddressListOwner(const AddressListOwner&) = delete;
    AddressListOwner& operator=(const AddressListOwner&) = delete;

    const Winsock::AddressInfo* First() const noexcept { return list_; }

private:
    Winsock::AddressInfo* list_;
};

// How the attempts ended. The error is the number of the call that failed, the resolver's or the
// last attempt's.
struct AddressWalk {
    enum Outcome { NotResolved, NoAddress, Refused, Accepted };

    Outcome outcome;
    int error = 0;

    // For operations to which a host without addresses is a failure: no call has failed then, and
    // the number at hand stands in.
    int ErrorOrLast() const { return outcome == NoAddress ? Winsock::WSAGetLastError() : error; }
};

// What the resolver is asked for: addresses of both families for this type and protocol.
inline Winsock::AddressInfo AddressHints(int type, int protocol) noexcept {
    Winsock::AddressInfo hints = {};
    hints.type = type;
    hints.protocol = protocol;
    return hints;
}

inline int AddressLength(const Winsock::AddressInfo& entry) noexcept {
    return static_cast<int>(entry.addressLength);
}

// Resolves the texts anew and gives each address to the attempt, which answers whether it
// succeeded, until one does. Nothing of the list is left afterwards.
template <class Attempt>
AddressWalk TryAddresses(const char* host, const char* port, const Winsock::AddressInfo& hints,
                         Attempt attempt) {
    Winsock::AddressInfo* found = nullptr;
    if (Winsock::getaddrinfo(host, port, &hints, &found) != 0)
        return {AddressWalk::NotResolved, Winsock::WSAGetLastError()};

    const AddressListOwner list(found);
    if (list.First() == nullptr) return {AddressWalk::NoAddress};

    for (const Winsock::AddressInfo* entry = list.First(); entry != nullptr; entry = entry->next) {
        if (attempt(*entry)) return {AddressWalk::Accepted};
    }
    return {AddressWalk::Refused, Winsock::WSAGetLastError()};
}

}  // namespace VelNet

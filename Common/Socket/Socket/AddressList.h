// Resolves a host and port string and tries the addresses one after the other.
#pragma once

#include "Platform/Winsock.h"

namespace VelNet {

// Frees a list, which may be empty, at the end of the scope.
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

// The outcome of the attempts. The error is the number of the call that failed: the resolver's, or
// the last attempt's.
struct AddressWalk {
    enum Outcome { NotResolved, NoAddress, Refused, Accepted };

    Outcome outcome;
    int error = 0;

    // For operations that treat a host without addresses as a failure. No call has failed then, so
    // the thread's last error is used.
    int ErrorOrLast() const { return outcome == NoAddress ? Winsock::WSAGetLastError() : error; }
};

// The hints for the resolver: addresses of both families, for this type and protocol.
inline Winsock::AddressInfo AddressHints(int type, int protocol) noexcept {
    Winsock::AddressInfo hints = {};
    hints.type = type;
    hints.protocol = protocol;
    return hints;
}

inline int AddressLength(const Winsock::AddressInfo& entry) noexcept {
    return static_cast<int>(entry.addressLength);
}

// Resolves the strings and passes each address to attempt, which returns whether it succeeded,
// until one does. The list is freed before this returns.
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

// Builds the lists that getaddrinfo returns. The system's lists have another layout and belong to
// its allocator, so the entries are copied.
#pragma once

#include "Platform/Winsock.h"
#include "sockets/KernelAddress.h"

namespace Posix {

// A list under construction, freed unless Take is called.
class AddressInfoList {
public:
    // Each entry has the hints' type and protocol, whatever they are.
    explicit AddressInfoList(const Winsock::AddressInfo& hints) noexcept : hints_(hints) {}
    ~AddressInfoList();
    AddressInfoList(const AddressInfoList&) = delete;
    AddressInfoList& operator=(const AddressInfoList&) = delete;

    bool IsEmpty() const noexcept { return first_ == nullptr; }

    // Appends the address unless it is in the list already; may throw std::bad_alloc.
    void Append(const KernelAddress& address);

    // Returns the list, which the caller frees with freeaddrinfo.
    Winsock::AddressInfo* Take() noexcept;

private:
    Winsock::AddressInfo hints_;
    Winsock::AddressInfo* first_ = nullptr;
};

}  // namespace Posix

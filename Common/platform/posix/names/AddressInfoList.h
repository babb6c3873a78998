// The lists of addresses that getaddrinfo answers with. The system's own lists have another layout
// and belong to its allocator, so these are made anew.
#pragma once

#include "Platform/Winsock.h"
#include "sockets/KernelAddress.h"

namespace Posix {

// A list that is being made. What is not taken is given back.
class AddressInfoList {
public:
    // Each entry repeats the hints' type and protocol, whatever they are.
    explicit AddressInfoList(const Winsock::AddressInfo& hints) noexcept : hints_(hints) {}
    ~AddressInfoList();
    AddressInfoList(const AddressInfoList&) = delete;
    AddressInfoList& operator=(const AddressInfoList&) = delete;

    bool IsEmpty() const noexcept { return first_ == nullptr; }

    // Appends the address unless the list has it; may throw std::bad_alloc.
    void Append(const KernelAddress& address);

    // The caller ends the list with freeaddrinfo.
    Winsock::AddressInfo* Take() noexcept;

private:
    Winsock::AddressInfo hints_;
    Winsock::AddressInfo* first_ = nullptr;
};

}  // namespace Posix

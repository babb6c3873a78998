// Builds the lists that getaddrinfo returns. The system's lists have another layout and belong to
// its allocator, so the entries are copied.
#pragma once

#include "Platform/Winsock.h"
#include "sockets/KernelAddress.h"

#include <cstddef>
#include <optional>
#include <unordered_set>

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
    struct HashOfAddress {
        std::size_t operator()(const Winsock::AddressInfo* info) const noexcept;
    };
    struct SameAddress {
        bool operator()(const Winsock::AddressInfo* left,
                        const Winsock::AddressInfo* right) const noexcept;
    };

    using Index = std::unordered_set<const Winsock::AddressInfo*, HashOfAddress, SameAddress>;

    // Returns whether the list lacks the address; a long list remembers it, and may throw
    // std::bad_alloc.
    bool IsNew(const Winsock::AddressInfo& info);
    bool Contains(const Winsock::AddressInfo& info) const noexcept;
    void BuildIndex();

    Winsock::AddressInfo hints_;
    Winsock::AddressInfo* first_ = nullptr;
    Winsock::AddressInfo** end_ = &first_;
    std::size_t length_ = 0;
    std::optional<Index> index_;  // of all entries; short lists are searched
};

}  // namespace Posix

// Builds the lists that getaddrinfo returns. The system's lists have another layout and belong to
// its allocator, so the entries are copied.
#pragma once

#include "Platform/Winsock.h"
#include "sockets/KernelAddress.h"

#include <cstddef>
#include <vector>

namespace Posix {

// A list under construction, freed unless Take is called.
class AddressInfoList {
public:
    // Each entry has the hints' type and protocol, whatever they are.
    explicit AddressInfoList(const Winsock::AddressInfo& hints) noexcept
        : type_(hints.type), protocol_(hints.protocol) {}
    ~AddressInfoList();
    AddressInfoList(const AddressInfoList&) = delete;
    AddressInfoList& operator=(const AddressInfoList&) = delete;

    bool IsEmpty() const noexcept { return first_ == nullptr; }

    // Appends the address unless it is in the list already; may throw std::bad_alloc.
    void Append(const KernelAddress& address);

    // Returns the list, which the caller frees with freeaddrinfo.
    Winsock::AddressInfo* Take() noexcept;

private:
    // Which addresses the list has: a table of the entries by their hash.
    class Index {
    public:
        bool IsEmpty() const noexcept { return slots_.empty(); }
        // Returns false if the address is there already; may throw std::bad_alloc.
        bool Add(const Winsock::AddressInfo& info);

    private:
        using Slots = std::vector<const Winsock::AddressInfo*>;

        void Grow();
        // Returns where the address is, or belongs.
        static Slots::reference SlotIn(Slots& slots, const Winsock::AddressInfo& info) noexcept;

        Slots slots_;  // at most half of them are taken
        std::size_t count_ = 0;
    };

    // Returns whether the list lacks the address; a long list remembers it, and may throw
    // std::bad_alloc.
    bool IsNew(const Winsock::AddressInfo& info);
    bool Contains(const Winsock::AddressInfo& info) const noexcept;

    int type_;
    int protocol_;
    Winsock::AddressInfo* first_ = nullptr;
    Winsock::AddressInfo** end_ = &first_;
    std::size_t length_ = 0;
    Index index_;  // of a long list; short ones are searched
};

}  // namespace Posix

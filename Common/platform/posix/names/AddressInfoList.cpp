#include "names/AddressInfoList.h"

#include <cstring>
#include <memory>
#include <utility>

namespace Posix {

namespace {

// An entry and the address that it points to.
struct Entry {
    Winsock::AddressInfo info;
    alignas(Winsock::AddressStorage) unsigned char address[sizeof(Winsock::AddressIpv6)];
};

Entry& EntryOf(Winsock::AddressInfo* info) noexcept {
    return *static_cast<Entry*>(static_cast<void*>(info));  // info is its first member
}

std::unique_ptr<Entry> NewEntry(const Winsock::AddressInfo& hints, const KernelAddress& address) {
    const AddressFamily& family = FamilyOf(address);
    auto entry = std::make_unique<Entry>();
    entry->info = {.flags = 0,
                   .family = family.winsock,
                   .type = hints.type,
                   .protocol = hints.protocol,
                   .addressLength = family.addressLength,
                   .canonicalName = nullptr,
                   .address = entry->address,
                   .next = nullptr};
    WinsockFromKernel(family, address, entry->address);
    return entry;
}

bool SameAddress(const Winsock::AddressInfo& left, const Winsock::AddressInfo& right) noexcept {
    return left.addressLength == right.addressLength &&
           std::memcmp(left.address, right.address, left.addressLength) == 0;
}

}  // namespace

AddressInfoList::~AddressInfoList() {
    Winsock::freeaddrinfo(first_);
}

void AddressInfoList::Append(const KernelAddress& address) {
    std::unique_ptr<Entry> entry = NewEntry(hints_, address);
    Winsock::AddressInfo** end = &first_;
    for (; *end != nullptr; end = &(*end)->next) {
        if (SameAddress(**end, entry->info)) return;
    }
    *end = &entry.release()->info;
}

Winsock::AddressInfo* AddressInfoList::Take() noexcept {
    return std::exchange(first_, nullptr);
}

}  // namespace Posix

void Winsock::freeaddrinfo(AddressInfo* list) {
    while (list != nullptr) {
        AddressInfo* next = list->next;
        delete &Posix::EntryOf(list);
        list = next;
    }
}

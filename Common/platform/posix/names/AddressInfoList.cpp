#include "names/AddressInfoList.h"

#include <functional>
#include <memory>
#include <string_view>
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

std::string_view BytesOf(const Winsock::AddressInfo& info) noexcept {
    return {static_cast<const char*>(info.address), info.addressLength};
}

}  // namespace

AddressInfoList::~AddressInfoList() {
    Winsock::freeaddrinfo(first_);
}

std::size_t AddressInfoList::HashOfAddress::operator()(
    const Winsock::AddressInfo* info) const noexcept {
    return std::hash<std::string_view>()(BytesOf(*info));
}

bool AddressInfoList::SameAddress::operator()(const Winsock::AddressInfo* left,
                                              const Winsock::AddressInfo* right) const noexcept {
    return BytesOf(*left) == BytesOf(*right);
}

void AddressInfoList::Append(const KernelAddress& address) {
    std::unique_ptr<Entry> entry = NewEntry(hints_, address);
    if (!IsNew(entry->info)) return;
    *end_ = &entry.release()->info;
    end_ = &(*end_)->next;
    ++length_;
}

bool AddressInfoList::IsNew(const Winsock::AddressInfo& info) {
    constexpr std::size_t LongestSearched = 16;
    if (length_ < LongestSearched) return !Contains(info);
    if (!index_) BuildIndex();
    return index_->insert(&info).second;
}

bool AddressInfoList::Contains(const Winsock::AddressInfo& info) const noexcept {
    const Winsock::AddressInfo* entry = first_;
    while (entry != nullptr && !SameAddress()(entry, &info))
        entry = entry->next;
    return entry != nullptr;
}

void AddressInfoList::BuildIndex() {
    Index index;
    for (const Winsock::AddressInfo* entry = first_; entry != nullptr; entry = entry->next)
        index.insert(entry);
    index_ = std::move(index);
}

Winsock::AddressInfo* AddressInfoList::Take() noexcept {
    index_.reset();
    length_ = 0;
    end_ = &first_;
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

#include "names/AddressInfoList.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

namespace Posix {

namespace {

// A longer list has an index.
constexpr std::size_t LongestSearched = 16;

// An entry and the address that it points to.
struct Entry {
    Winsock::AddressInfo info;
    alignas(Winsock::AddressStorage) unsigned char address[sizeof(Winsock::AddressIpv6)];
};

Entry& EntryOf(Winsock::AddressInfo* info) noexcept {
    return *static_cast<Entry*>(static_cast<void*>(info));  // info is its first member
}

// Most lists have one entry and are freed before the next one is made, so the memory of one is
// kept.
constinit Entry keptEntry = {};
constinit std::atomic_flag isKeptEntryUsed;

struct EntryFreer {
    void operator()(Entry* entry) const noexcept {
        if (entry == &keptEntry) {
            isKeptEntryUsed.clear(std::memory_order_release);
        } else {
            delete entry;
        }
    }
};
using EntryOwner = std::unique_ptr<Entry, EntryFreer>;

EntryOwner AllocateEntry() {
    const bool isKept = !isKeptEntryUsed.test_and_set(std::memory_order_acquire);
    return EntryOwner(isKept ? &keptEntry : new Entry);
}

EntryOwner NewEntry(int type, int protocol, const KernelAddress& address) {
    const AddressFamily& family = FamilyOf(address);
    EntryOwner entry = AllocateEntry();
    entry->info = {.flags = 0,
                   .family = family.winsock,
                   .type = type,
                   .protocol = protocol,
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

bool SameAddress(const Winsock::AddressInfo& left, const Winsock::AddressInfo& right) noexcept {
    return BytesOf(left) == BytesOf(right);
}

// FNV-1a.
std::uint64_t HashOf(const Winsock::AddressInfo& info) noexcept {
    std::uint64_t hash = 0xCBF2'9CE4'8422'2325U;
    for (const char byte : BytesOf(info))
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100'0000'01B3U;
    return hash;
}

}  // namespace

AddressInfoList::~AddressInfoList() {
    Winsock::freeaddrinfo(first_);
}

AddressInfoList::Index::Slots::reference AddressInfoList::Index::SlotIn(
    Slots& slots, const Winsock::AddressInfo& info) noexcept {
    std::size_t slot = HashOf(info) % slots.size();
    while (slots[slot] != nullptr && !SameAddress(*slots[slot], info))
        slot = (slot + 1) % slots.size();
    return slots[slot];
}

bool AddressInfoList::Index::Add(const Winsock::AddressInfo& info) {
    if (2 * count_ >= slots_.size()) Grow();
    const Winsock::AddressInfo*& slot = SlotIn(slots_, info);
    if (slot != nullptr) return false;
    slot = &info;
    ++count_;
    return true;
}

void AddressInfoList::Index::Grow() {
    Slots larger(2 * slots_.size() + 2 * LongestSearched + 2);
    for (const Winsock::AddressInfo* known : slots_) {
        if (known != nullptr) SlotIn(larger, *known) = known;
    }
    slots_.swap(larger);
}

void AddressInfoList::Append(const KernelAddress& address) {
    EntryOwner entry = NewEntry(type_, protocol_, address);
    if (!IsNew(entry->info)) return;
    *end_ = &entry.release()->info;
    end_ = &(*end_)->next;
    ++length_;
}

bool AddressInfoList::IsNew(const Winsock::AddressInfo& info) {
    if (length_ < LongestSearched) return !Contains(info);
    // The first entry takes memory for all of them.
    const Winsock::AddressInfo* known = index_.IsEmpty() ? first_ : nullptr;
    for (; known != nullptr; known = known->next)
        index_.Add(*known);
    return index_.Add(info);
}

bool AddressInfoList::Contains(const Winsock::AddressInfo& info) const noexcept {
    const Winsock::AddressInfo* entry = first_;
    while (entry != nullptr && !SameAddress(*entry, info))
        entry = entry->next;
    return entry != nullptr;
}

Winsock::AddressInfo* AddressInfoList::Take() noexcept {
    index_ = {};
    length_ = 0;
    end_ = &first_;
    return std::exchange(first_, nullptr);
}

}  // namespace Posix

void Winsock::freeaddrinfo(AddressInfo* list) {
    while (list != nullptr) {
        AddressInfo* next = list->next;
        Posix::EntryFreer()(&Posix::EntryOf(list));
        list = next;
    }
}

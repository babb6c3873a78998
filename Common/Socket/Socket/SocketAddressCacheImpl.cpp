#include "Socket/SocketAddressCacheImpl.h"

#include "Socket/NarrowText.h"
#include "VelNet/SocketAddress.h"

#include <algorithm>
#include <new>

namespace VelNet {

namespace {

template <class EntryList, class Matches>
VelBase::ReturnPtrI<CacheEntry> FindFirst(const EntryList& entries, Matches matches) {
    const auto found = std::find_if(entries.begin(), entries.end(), matches);
    if (found == entries.end()) return {};
    return {found->Get()};
}

}  // namespace

SocketAddressCache* CreateSocketAddressCache() {
    // Required (AddressCacheLookUps.WithoutMemoryThereIsNoCacheAndNoException): unlike the other
    // factories.
    return new (std::nothrow) SocketAddressCacheImpl;
}

Octets SocketAddressCacheImpl::GetOctetsFromMachineName(const char* name) {
    if (const auto known = GetCacheEntry(name)) return known->address;

    const VelBase::ReturnPtrI<CacheEntry> entry(new CacheEntry);
    entry->hostName = OrEmpty(name);
    // Required (AddressCacheLookUps.OnlyTheFirstAddressIsKeptAndReturnedEachTime): the others are
    // dropped.
    entry->address = SocketAddress::GetOctetsFromMachineName(name)->GetOctets(0);
    // Required (AddressCacheLookUps.WhatOneOperationLearntTheOtherDoesNotKnow): known by name only.
    byName_.emplace_back(entry.Get());
    return entry->address;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the value.
VelBase::ReturnString SocketAddressCacheImpl::GetMachineNameFromOctets(Octets address) {
    if (const auto known = GetCacheEntry(address)) return {known->hostName.c_str()};

    const VelBase::ReturnPtrI<CacheEntry> entry(new CacheEntry);
    entry->address = address;
    entry->hostName = SocketAddress::GetMachineNameFromOctets(address).c_str();
    byAddress_.emplace_back(entry.Get());
    return {entry->hostName.c_str()};
}

VelBase::ReturnPtrI<CacheEntry> SocketAddressCacheImpl::GetCacheEntry(const char* name) const {
    return FindFirst(byName_, [wanted = OrEmpty(name)](const EntryReference& entry) {
        return entry->hostName == wanted;
    });
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): as above.
VelBase::ReturnPtrI<CacheEntry> SocketAddressCacheImpl::GetCacheEntry(Octets address) const {
    return FindFirst(byAddress_,
                     [&](const EntryReference& entry) { return entry->address == address; });
}

}  // namespace VelNet

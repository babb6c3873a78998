// Implements SocketAddressCache with two lists.
#pragma once

#include "Socket/CacheEntry.h"
#include "VelBase/ReturnPtrI.h"
#include "VelNet/SocketAddressCache.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <utility>
#include <vector>

namespace VelNet {

// A copy shares its entries with the original.
class SocketAddressCacheImpl : public VelSynch::ReferenceCountedImpl<int>,
                               public SocketAddressCache {
public:
    Octets GetOctetsFromMachineName(const char* name) override;
    VelBase::ReturnString GetMachineNameFromOctets(Octets address) override;

private:
    // A counted reference that can be copied with its list.
    class EntryReference {
    public:
        explicit EntryReference(CacheEntry* entry) : entry_(entry) { entry_->AddRef(); }
        EntryReference(const EntryReference& other) : EntryReference(other.entry_) {}
        EntryReference& operator=(EntryReference other) noexcept {
            std::swap(entry_, other.entry_);
            return *this;
        }
        ~EntryReference() { entry_->Release(); }

        CacheEntry* operator->() const noexcept { return entry_; }
        CacheEntry* Get() const noexcept { return entry_; }

    private:
        CacheEntry* entry_;
    };
    using EntryList = std::vector<EntryReference>;

    // Returns the first entry that matches, or an empty owner.
    VelBase::ReturnPtrI<CacheEntry> GetCacheEntry(const char* name) const;
    VelBase::ReturnPtrI<CacheEntry> GetCacheEntry(Octets address) const;

    // In the order in which the entries were resolved.
    EntryList byName_;
    EntryList byAddress_;
};

}  // namespace VelNet

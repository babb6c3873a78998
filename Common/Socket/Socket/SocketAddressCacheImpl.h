// Implements SocketAddressCache with two lists.
#pragma once

#include "Socket/CacheEntry.h"
#include "VelBase/InterfaceHolder.h"
#include "VelBase/ReturnPtrI.h"
#include "VelNet/SocketAddressCache.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <vector>

namespace VelNet {

// A copy shares its entries with the original.
class SocketAddressCacheImpl : public VelSynch::ReferenceCountedImpl<int>,
                               public SocketAddressCache {
public:
    Octets GetOctetsFromMachineName(const char* name) override;
    VelBase::ReturnString GetMachineNameFromOctets(Octets address) override;

private:
    using EntryReference = VelBase::InterfaceHolder<CacheEntry>;
    using EntryList = std::vector<EntryReference>;

    // Returns the first entry that matches, or an empty owner.
    VelBase::ReturnPtrI<CacheEntry> GetCacheEntry(const char* name) const;
    VelBase::ReturnPtrI<CacheEntry> GetCacheEntry(Octets address) const;

    // In the order in which the entries were resolved.
    EntryList byName_;
    EntryList byAddress_;
};

}  // namespace VelNet

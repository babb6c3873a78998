// A cache of resolved host names and addresses.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Octets.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

// Resolves like SocketAddress and remembers each result for as long as the cache lives: entries
// never expire, even if a host's addresses change. Failures are not remembered. Names and addresses
// are cached separately: neither operation uses what the other has resolved. A look-up walks all
// entries, so the cache suits few hosts.
//
// Created by CreateSocketAddressCache. Reference counted. A cache and its references belong to one
// thread at a time. Look-ups block as long as the resolver does.
class VELSOCK_EXPORT SocketAddressCache : public virtual VelBase::ReferenceCounted {
public:
    // An interface without data: copying copies nothing.
    SocketAddressCache();
    SocketAddressCache(const SocketAddressCache& other);
    SocketAddressCache& operator=(const SocketAddressCache& other);
    ~SocketAddressCache() override;

    // Returns the first address of the host. Names are compared byte by byte, case included.
    //
    // Throws: what SocketAddress::GetOctetsFromMachineName throws
    virtual Octets GetOctetsFromMachineName(const char* name) = 0;

    // Returns the name of the host with this address.
    //
    // Throws: what SocketAddress::GetMachineNameFromOctets throws
    virtual VelBase::ReturnString GetMachineNameFromOctets(Octets address) = 0;
};

// Creates an empty cache with the reference count 0; returns null if there is no memory.
[[nodiscard]] VELSOCK_EXPORT SocketAddressCache* CreateSocketAddressCache();

}  // namespace VelNet

// Host names and addresses that are looked up once.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Octets.h"

namespace VelNet {

// Resolves like SocketAddress and remembers every answer until it ends: nothing expires, nothing is
// forgotten, however the host's addresses change. Meant for few hosts: each look-up walks what is
// remembered. Failures are not remembered. Names and addresses are remembered apart: what one
// operation has learnt the other does not know.
//
// Made by CreateSocketAddressCache. Reference counted. A cache and its references are used by one
// thread at a time; it blocks as long as the resolver does.
class VELSOCK_EXPORT SocketAddressCache : public virtual VelBase::ReferenceCounted {
public:
    SocketAddressCache();
    SocketAddressCache(const SocketAddressCache& other);
    SocketAddressCache& operator=(const SocketAddressCache& other);
    ~SocketAddressCache() override;

    // The first address of the host. Names are told apart byte by byte, upper and lower case too.
    // Throws what SocketAddress::GetOctetsFromMachineName throws.
    virtual Octets GetOctetsFromMachineName(const char* name) = 0;

    // The name of the host. Throws what SocketAddress::GetMachineNameFromOctets throws.
    virtual VelBase::ReturnString GetMachineNameFromOctets(Octets address) = 0;
};

// An empty cache with the reference count 0, or null when there is no memory for one.
VELSOCK_EXPORT SocketAddressCache* CreateSocketAddressCache();

}  // namespace VelNet

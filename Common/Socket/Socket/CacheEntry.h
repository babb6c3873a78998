// One answer that an address cache remembers.
#pragma once

#include "VelNet/Octets.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <string>

namespace VelNet {

struct CacheEntry : VelSynch::ReferenceCountedImpl<int> {
    std::string hostName;  // UTF-8: as the caller gave it, or as the system told it
    Octets address;
};

}  // namespace VelNet

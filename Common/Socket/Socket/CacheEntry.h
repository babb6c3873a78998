// One result that an address cache remembers.
#pragma once

#include "VelNet/Octets.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <string>

namespace VelNet {

struct CacheEntry : VelSynch::ReferenceCountedImpl<int> {
    std::string hostName;  // UTF-8: as passed by the caller, or as found by the system
    Octets address;
};

}  // namespace VelNet

// What the process holds.
#pragma once

namespace Soak {

struct Usage {
    double allocatedBytes;
    double residentBytes;
    double descriptors;
};

Usage CurrentUsage();

}  // namespace Soak

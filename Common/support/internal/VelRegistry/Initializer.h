// Keeps the registry library up.
#pragma once

namespace VelRegistry {

// The constructor brings the library up, the destructor takes it down. The registry library holds
// nothing that would have to be made or ended, so all that an object does today is mark that span.
class Initializer {
public:
    Initializer();
    ~Initializer();
    Initializer(const Initializer&) = delete;
    Initializer& operator=(const Initializer&) = delete;
};

}  // namespace VelRegistry

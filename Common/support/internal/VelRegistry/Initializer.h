// Keeps the registry library up.
#pragma once

namespace VelRegistry {

// The constructor starts the library, the destructor stops it. The library has no state yet that
// needs either, so an object only marks the span.
class Initializer {
public:
    Initializer();
    ~Initializer();
    Initializer(const Initializer&) = delete;
    Initializer& operator=(const Initializer&) = delete;
};

}  // namespace VelRegistry

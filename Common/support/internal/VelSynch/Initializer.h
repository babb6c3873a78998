// Keeps the synchronisation library up.
#pragma once

namespace VelSynch {

// The constructor brings the library up, the destructor takes it down. The synchronisation library
// holds nothing that would have to be made or ended, so all that an object does today is mark that
// span.
class Initializer {
public:
    Initializer();
    ~Initializer();
    Initializer(const Initializer&) = delete;
    Initializer& operator=(const Initializer&) = delete;
};

}  // namespace VelSynch

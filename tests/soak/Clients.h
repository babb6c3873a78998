// The work of one thread: many connections, of which a random one does something random.
#pragma once

#include <VelNet/SocketAddressCache.h>

#include <vector>

#include "Connection.h"
#include "Trace.h"

namespace Soak {

struct Work {
    std::size_t connections = 0;
    std::size_t transfers = 0;
    std::size_t bytes = 0;
    std::size_t names = 0;
    std::size_t closes = 0;

    void Add(const Work& other);
};

class Clients {
public:
    Clients(std::uint64_t seed, std::size_t count, Trace& trace);

    // Fills the places with connections, and takes that many steps.
    void Run(std::size_t steps);
    const Work& Done() const { return work_; }

private:
    void Step();
    void Use(std::unique_ptr<Connection>& place);
    void End(std::unique_ptr<Connection>& place);
    void LookUpName();

    Random random_;
    Trace& trace_;
    std::vector<std::unique_ptr<Connection>> places_;
    VelBase::ReturnPtrI<VelNet::SocketAddressCache> cache_;
    Work work_;
};

}  // namespace Soak

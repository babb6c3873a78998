// Two sockets of this process that talk to each other.
#pragma once

#include <VelNet/SocketXt.h>

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

namespace Soak {

using Random = std::mt19937_64;

inline std::size_t Below(Random& random, std::size_t limit) {
    return random() % limit;
}

// Throws std::runtime_error.
void Require(bool kept, const std::string& promise);

class Connection {
public:
    virtual ~Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Sends bytes from one end to the other, which must receive them as they are. Returns how many.
    virtual std::size_t Exchange(Random& random) = 0;
    // Waits in a set for bytes that come, and receives them.
    virtual void WaitInSet(Random& random) = 0;
    // Closes one end; the other must be told if it can be.
    virtual void CloseOrderly(Random& random) = 0;
    // The same while there are bytes that nobody has received.
    virtual void CloseAbruptly(Random& random) = 0;

protected:
    Connection() = default;
};

// Of a kind that chance decides: streams or datagrams, the classic or the extended sockets, these
// over IPv4 or IPv6.
std::unique_ptr<Connection> MakeConnection(Random& random);

}  // namespace Soak

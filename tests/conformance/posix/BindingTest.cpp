// Names and ports that the system does not tell or would give to others.
#include <fcntl.h>
#include <unistd.h>

#include "conformance/Scene.h"

namespace Conformance {
namespace {

// Takes a socket's descriptor away for its lifetime.
class Absence {
public:
    explicit Absence(const OwnedSocket& socket)
        : number_(static_cast<int>(socket.Get())), kept_(::fcntl(number_, F_DUPFD_CLOEXEC, 3)) {
        ::close(number_);
    }
    ~Absence() {
        ::dup2(kept_, number_);
        ::close(kept_);
    }
    Absence(const Absence&) = delete;
    Absence& operator=(const Absence&) = delete;

private:
    int number_;
    int kept_;
};

using UnknownName = Started;

TEST_F(UnknownName, IsAFailureThatLeavesTheRoomAlone) {
    const OwnedSocket stream = NewBoundStream();
    const OwnedSocket datagram = NewBoundDatagram();
    for (const OwnedSocket* socket : {&stream, &datagram}) {
        Winsock::AddressIpv4 address = Ipv4(9, 9, 9, 9, 99);
        int length = sizeof address;
        {
            const Absence absence(*socket);
            EXPECT_TRUE(FailsWith(10038, Winsock::getsockname(socket->Get(), &address, &length)));
        }
        EXPECT_EQ(address.address[0], 9);
        EXPECT_TRUE(Succeeds(Winsock::getsockname(socket->Get(), &address, &length)));
    }
}

}  // namespace
}  // namespace Conformance

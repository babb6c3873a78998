// An address that another program has bound and does not share.
#pragma once

#include <Platform/Winsock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "support/RawPeer.h"

namespace Conformance {

// Even one that no socket of the library could be bound to.
class TakenAddress {
public:
    template <typename Address>
    explicit TakenAddress(const Address& address)
        : descriptor_(::socket(KernelFamily(address), SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_storage storage = {};
        std::memcpy(&storage, &address, sizeof address);
        storage.ss_family = KernelFamily(address);
        EXPECT_EQ(::bind(descriptor_, reinterpret_cast<const sockaddr*>(&storage), sizeof address),
                  0);
    }
    ~TakenAddress() { ::close(descriptor_); }
    TakenAddress(const TakenAddress&) = delete;
    TakenAddress& operator=(const TakenAddress&) = delete;

    unsigned int Port() const {
        return Support::LocalPortOf(static_cast<unsigned long long>(descriptor_));
    }

private:
    template <typename Address>
    static sa_family_t KernelFamily(const Address& address) {
        return address.family == Winsock::FamilyIpv6 ? AF_INET6 : AF_INET;
    }

    int descriptor_;
};

}  // namespace Conformance

// Sockets that are bound to a loopback address, and the groups that they join.
#pragma once

#include <string>

#include "conformance/DatagramScene.h"
#include "conformance/Scene.h"

namespace Conformance {

inline constexpr Winsock::MembershipIpv4 Group = {{239, 1, 2, 3}, {127, 0, 0, 1}};
inline constexpr Winsock::MembershipIpv4 OtherGroup = {{239, 1, 2, 4}, {127, 0, 0, 1}};

class BoundGroup : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        receiver_ = NewReceiver();
        sender_ = NewBoundDatagram();
        port_ = LocalPort(receiver_);
    }
    void TearDown() override {
        receiver_.Close();
        sender_.Close();
        Started::TearDown();
    }

    void SendToGroup(const std::string& text, const Winsock::MembershipIpv4& group = Group) {
        SendToGroup(sender_, text, group);
    }
    void SendToGroup(const OwnedSocket& sender, const std::string& text,
                     const Winsock::MembershipIpv4& group = Group) {
        const auto& octets = group.group;
        const auto address = Ipv4(octets[0], octets[1], octets[2], octets[3], port_);
        EXPECT_EQ(SendTo(sender, text, address), static_cast<int>(text.size()));
    }
    void SendToAddress(const std::string& text) {
        EXPECT_EQ(SendTo(sender_, text, Loopback(port_)), static_cast<int>(text.size()));
    }

    OwnedSocket receiver_;
    OwnedSocket sender_;
    unsigned int port_ = 0;
};

}  // namespace Conformance

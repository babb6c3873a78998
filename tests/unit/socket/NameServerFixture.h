// The ground that tests of the machine's name servers stand on.
#pragma once

#include <string>
#include <vector>

#include "TcpipSettingsFixture.h"

namespace SocketTests {

class NameServers : public TcpipSettingsTest {
protected:
    static std::vector<std::string> Ask() {
        const auto servers = SocketAddress::GetLocalMachineDomainNameServer();
        std::vector<std::string> addresses;
        for (unsigned int index = 0; index < servers->GetCount(); ++index)
            addresses.emplace_back(servers->GetOctets(index).GetAddressString().c_str());
        return addresses;
    }

    static SettingsReader Reader() {
        return {.operation = [] { SocketAddress::GetLocalMachineDomainNameServer(); },
                .label = u"VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL."};
    }
    static SettingsReader OlderReader() {
        SettingsReader reader = Reader();
        reader.isOlderLayout = true;
        return reader;
    }

    static Caught NoneIsSetUp() {
        return {true,
                SettingsFailure(Reader(), u"NameServer and DhcpNameServer keys are not set up"),
                -1};
    }

    // What was taken for an address, in its order.
    static std::vector<std::string> ConvertedTokens() {
        std::vector<std::string> tokens;
        for (const Event& event : EventsOf("inet_addr"))
            tokens.push_back(event.bytes);
        return tokens;
    }
};

}  // namespace SocketTests

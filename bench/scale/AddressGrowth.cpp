// Hosts that have many addresses, beside what the system's resolver takes for them.

#include "ScaledRows.h"
#include "harness/LibrarySockets.h"

#include <VelNet/SocketAddress.h>
#include <netdb.h>

#include <fstream>
#include <stdexcept>
#include <utility>

namespace Bench {
namespace {

constexpr const char* ManyAddresses = "host-of-many-addresses";

// All of them on the loopback interface.
std::string AddressText(int number) {
    return "127.1." + std::to_string(number / 250) + "." + std::to_string(number % 250 + 1);
}

class HostScene : public ScaledScene {
public:
    HostScene(int addresses, std::string hostsFile)
        : addresses_(addresses), hostsFile_(std::move(hostsFile)) {
        Prepare();
    }

    // An extended socket is made for the first address of this machine's name.
    void Prepare() const {
        std::ofstream file(hostsFile_);
        file << "127.0.0.1 " << VelNet::SocketAddress::GetLocalMachineName().c_str() << '\n';
        for (int number = 0; number < addresses_; ++number)
            file << AddressText(number) << ' ' << ManyAddresses << '\n';
        file.close();
        if (!file) throw std::runtime_error("the table of hosts cannot be written");
    }

protected:
    int addresses_;

private:
    std::string hostsFile_;
};

class AskSystem : public HostScene {
public:
    using HostScene::HostScene;

    int Do() const {
        const addrinfo wanted{0, AF_INET, SOCK_DGRAM, IPPROTO_UDP, 0, nullptr, nullptr, nullptr};
        addrinfo* found = nullptr;
        if (::getaddrinfo(ManyAddresses, "9", &wanted, &found) != 0) return 0;
        int count = 0;
        for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next)
            ++count;
        ::freeaddrinfo(found);
        return count == addresses_;
    }
};

class AskClassic : public HostScene {
public:
    using HostScene::HostScene;

    int Do() const {
        const auto found = VelNet::SocketAddress::GetOctetsFromMachineName(ManyAddresses);
        return found->GetCount() == static_cast<unsigned int>(addresses_);
    }
};

// The extended socket asks for all of them, and sends to the first.
class SendToHost : public HostScene {
public:
    using HostScene::HostScene;

    int Do() const { return sender_->SendTo("x", 1, ManyAddresses, "9"); }

private:
    ExtendedOwner sender_ = CreateBoundExtendedDatagram();
};

}  // namespace

void AddAddressGrowth(Cases& cases, const std::string& hostsFile) {
    const auto numbers = {1, 10, 100, 1'000, 4'000};
    AddGrowth<AskSystem>(cases, "addresses-of-host-by-system", numbers, hostsFile);
    AddGrowth<AskClassic>(cases, "addresses-of-host", numbers, hostsFile);
    AddGrowth<SendToHost>(cases, "send-to-host-of-addresses", numbers, hostsFile);
}

}  // namespace Bench

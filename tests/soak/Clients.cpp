#include "Clients.h"

namespace Soak {

using VelNet::Exception;
using VelNet::Octets;
using VelNet::SocketAddress;

void Work::Add(const Work& other) {
    connections += other.connections;
    transfers += other.transfers;
    bytes += other.bytes;
    names += other.names;
    closes += other.closes;
}

Clients::Clients(std::uint64_t seed, std::size_t count, Trace& trace)
    : random_(seed), trace_(trace), places_(count), cache_(VelNet::CreateSocketAddressCache()) {}

void Clients::Run(std::size_t steps) {
    for (auto& place : places_) {
        place = MakeConnection(random_);
        ++work_.connections;
    }
    for (; steps > 0; --steps)
        Step();
}

void Clients::Step() {
    const std::size_t kind = Below(random_, 100);
    if (kind < 3) return LookUpName();
    if (kind < 6) return trace_.Change(random_);
    Use(places_[Below(random_, places_.size())]);
}

void Clients::Use(std::unique_ptr<Connection>& place) {
    const std::size_t kind = Below(random_, 10);
    if (kind == 0) return End(place);
    if (kind == 1) return place->WaitInSet(random_);
    work_.bytes += place->Exchange(random_);
    ++work_.transfers;
}

// A third ends with the last reference, whatever is on its way.
void Clients::End(std::unique_ptr<Connection>& place) {
    const std::size_t kind = Below(random_, 3);
    if (kind == 0) place->CloseOrderly(random_);
    if (kind == 1) place->CloseAbruptly(random_);
    ++work_.closes;
    place = MakeConnection(random_);
    ++work_.connections;
}

void Clients::LookUpName() {
    ++work_.names;
    const Octets loopback(127, 0, 0, 1);
    switch (Below(random_, 4)) {
        case 0:
            Require(SocketAddress::GetOctetsFromMachineName("localhost")->GetCount() > 0,
                    "localhost has an address");
            break;
        case 1:
            Require(cache_->GetOctetsFromMachineName("127.0.0.1") == loopback,
                    "an address stands for itself");
            break;
        case 2:
            Require(*SocketAddress::GetLocalMachineName().c_str() != '\0', "the host has a name");
            break;
        default:
            try {
                SocketAddress::ConvertDottedStringToOctets("no.address");
                Require(false, "what is no address is refused");
            } catch (const Exception& failure) {
                Require(failure.GetErrorCode() == VelNet::SOCKET_ERR_UNKNOWN, "with its code");
            }
    }
}

}  // namespace Soak

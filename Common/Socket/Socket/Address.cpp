#include "VelNet/Address.h"

#include "Socket/ClearForGood.h"
#include "VelNet/Exception.h"
#include "VelNet/SocketAddress.h"

#include <memory>
#include <string>
#include <utility>

namespace VelNet {

struct Address::Record {
    std::string ipAddress;
    std::string machineName;
    unsigned short port = 0;
    bool initialized = false;
    Octets octets;
};

namespace {

Octets FirstOctetsOf(const char* host) {
    return SocketAddress::GetOctetsFromMachineName(host)->GetOctets(0);
}

Octets FirstOctetsOfThisMachine() {
    const VelBase::ReturnPtrI<OctetsCollection> addresses =
        SocketAddress::GetOctetsFromMachineName(SocketAddress::GetLocalMachineName().c_str());
    return addresses->GetCount() != 0 ? addresses->GetOctets(0) : Octets();
}

Octets OctetsOf(Address::SpecialAddress special) {
    switch (special) {
        case Address::LOOPBACK:
            return {127, 0, 0, 1};
        case Address::THIS_MACHINE:
            return FirstOctetsOfThisMachine();
        case Address::ANY:
        default:
            return {};
    }
}

// Returns the host's name, or the dotted address if there is none.
std::string MachineNameOf(const Octets& octets, const std::string& ipAddress) {
    try {
        return SocketAddress::GetMachineNameFromOctets(octets).c_str();
    } catch (const Exception&) {
        return ipAddress;
    }
}

}  // namespace

Address::Address() : record_(new Record) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the value.
Address::Address(Octets octets, unsigned short port) : record_(nullptr) {
    auto record = std::make_unique<Record>();
    record->port = port;
    record->ipAddress = octets.GetAddressString().c_str();
    record->machineName = MachineNameOf(octets, record->ipAddress);
    record->octets = octets;
    record->initialized = true;
    record_ = record.release();
}

Address::Address(const char* host, unsigned short port) : Address(FirstOctetsOf(host), port) {}

Address::Address(SpecialAddress special, unsigned short port) : Address(OctetsOf(special), port) {}

// Required (AddressValues.CopyOfADefaultOneCountsAsInitialized): even if the original does not.
Address::Address(const Address& other) : record_(new Record(*other.record_)) {
    record_->initialized = true;
}

const Address& Address::operator=(const Address& other) {
    if (this != &other) {
        Address copy(other);
        std::swap(record_, copy.record_);
    }
    // Required (AddressValues.SelfAssignmentIsAnAssignmentAndInitializes): even in self-assignment.
    record_->initialized = true;
    return *this;
}

Address::~Address() {
    delete record_;
    ClearForGood(record_);
}

bool Address::operator==(const Address& other) const {
    return record_->port == other.record_->port && record_->ipAddress == other.record_->ipAddress;
}

bool Address::operator!=(const Address& other) const {
    return !(*this == other);
}

VelBase::ReturnString Address::GetMachineName() const {
    return {record_->machineName.c_str()};
}

VelBase::ReturnString Address::GetIpAddress() const {
    return {record_->ipAddress.c_str()};
}

Octets Address::GetOctets() const {
    return record_->octets;
}

unsigned short Address::GetPort() const noexcept {
    return record_->port;
}

bool Address::IsInitialized() const noexcept {
    return record_->initialized;
}

}  // namespace VelNet

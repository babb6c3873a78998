// What an Address tells, all at once.
#pragma once

#include <VelNet/Address.h>

#include <ostream>
#include <string>

namespace SocketTests {

struct AddressFields {
    std::string ip;
    std::string machine;
    unsigned short port;
    bool isInitialized;
    std::string octets;

    bool operator==(const AddressFields&) const = default;
};

inline AddressFields FieldsOf(const VelNet::Address& address) {
    return {address.GetIpAddress().c_str(), address.GetMachineName().c_str(), address.GetPort(),
            address.IsInitialized(), address.GetOctets().GetAddressString().c_str()};
}

inline void PrintTo(const AddressFields& fields, std::ostream* stream) {
    *stream << fields.ip << " (" << fields.octets << ") named \"" << fields.machine << "\", port "
            << fields.port << (fields.isInitialized ? "" : ", not initialized");
}

}  // namespace SocketTests

// An IPv4 endpoint with its names.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Octets.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

// An IPv4 address with its dotted form, a host name and a port: a value that owns its data. Copies
// are deep.
//
// Names are resolved only during construction, which may block. The socket layer must be up
// (SocketInitialization) for the constructors that resolve.
//
// Each object belongs to one thread at a time. Ports are in host byte order, strings are UTF-8.
// Constructors, assignment and the operations that return strings or octets can throw
// std::bad_alloc.
class VELSOCK_EXPORT Address {
public:
    // Addresses that are chosen by meaning. Any value may be passed; one that has no name here
    // stands for 0.0.0.0.
    enum SpecialAddress : int {
        LOOPBACK = 0,      // 127.0.0.1
        ANY = 1,           // 0.0.0.0
        THIS_MACHINE = 2,  // the first address of the local host's name
    };

    // 0.0.0.0, port 0 and empty strings; not initialized. Resolves nothing.
    Address();

    // Looks up the host name of the octets. If there is none, the dotted form is used in its place,
    // and nothing is logged.
    Address(Octets octets, unsigned short port);

    // Resolves the host, then does the same with its first address.
    //
    // Throws: what SocketAddress::GetOctetsFromMachineName throws
    Address(const char* host, unsigned short port);

    // Does the same with the special address.
    //
    // Throws: for THIS_MACHINE what SocketAddress::GetLocalMachineName and GetOctetsFromMachineName
    //         throw
    Address(SpecialAddress special, unsigned short port);

    // Copies resolve nothing.
    //
    // Required: a copy counts as initialized, even if the original does not.
    Address(const Address& other);
    const Address& operator=(const Address& other);
    ~Address();

    // Equal if ports and dotted forms are equal; host names are not compared. A default-constructed
    // object has no dotted form and so differs from ANY with port 0.
    bool operator==(const Address& other) const;
    bool operator!=(const Address& other) const;

    // Return the host name, the dotted form, the octets and the port.
    VelBase::ReturnString GetMachineName() const;
    VelBase::ReturnString GetIpAddress() const;
    Octets GetOctets() const;
    unsigned short GetPort() const noexcept;

    // Returns false for an object that was constructed without an address and never assigned to.
    bool IsInitialized() const noexcept;

private:
    struct Record;
    Record* record_;
};

}  // namespace VelNet

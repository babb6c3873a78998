// An IPv4 endpoint with its names.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Octets.h"

namespace VelNet {

// A host, by its octets, dotted form and name, and a port: a value that owns its record and is
// copied deeply. The names are resolved when an object is made, which may block; nothing is
// resolved later. Each object is used by one thread at a time. The socket layer must be up
// (SocketInitialization) for every constructor that resolves. All ports are in host byte order; all
// texts are UTF-8. Constructors, assignment and operations that return texts or octets throw
// std::bad_alloc.
class VELSOCK_EXPORT Address {
public:
    // Addresses by their meaning. Any value may be passed; one without a name gives 0.0.0.0.
    enum SpecialAddress : int {
        LOOPBACK = 0,      // 127.0.0.1
        ANY = 1,           // 0.0.0.0
        THIS_MACHINE = 2,  // the first address of the local machine's name
    };

    // 0.0.0.0, port 0 and empty texts; not initialized. Resolves nothing.
    Address();

    // Asks for the host name of the octets; where none is found, the dotted form stands in for it,
    // and nothing is logged.
    Address(Octets octets, unsigned short port);

    // Takes the first address of the host, then as above. Throws what
    // SocketAddress::GetOctetsFromMachineName throws.
    Address(const char* host, unsigned short port);

    // Takes the octets of the special address, then as above. THIS_MACHINE throws what
    // SocketAddress::GetLocalMachineName and GetOctetsFromMachineName throw.
    Address(SpecialAddress special, unsigned short port);

    // Copies resolve nothing. Required: a copy counts as initialized, whatever it was copied from.
    Address(const Address& other);
    const Address& operator=(const Address& other);
    ~Address();

    // Whether ports and dotted forms are equal; names take no part.
    bool operator==(const Address& other) const;
    bool operator!=(const Address& other) const;

    VelBase::ReturnString GetMachineName() const;
    VelBase::ReturnString GetIpAddress() const;
    Octets GetOctets() const;
    unsigned short GetPort() const noexcept;

    // False for an object that was made without an address and never assigned.
    bool IsInitialized() const noexcept;

private:
    struct Record;
    Record* record_;
};

}  // namespace VelNet

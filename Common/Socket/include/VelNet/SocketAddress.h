// An IPv4 endpoint, and the plain resolution of host names.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnPtrI.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Octets.h"
#include "VelNet/OctetsCollection.h"

namespace VelNet {

// An address and a port: a value that owns its record and is copied deeply. Every constructor
// throws std::bad_alloc when there is no memory for it. Each object is used by one thread at a
// time.
//
// The static operations are the library's resolvers over the system's IPv4 name functions, and two
// that read the machine's DNS settings. They keep no state and may run on any thread; the socket
// layer must be up (SocketInitialization). They block as long as the system's resolver does. Names
// are UTF-8. A failure is logged under "Error" before it is thrown, except where it says otherwise,
// and leaves nothing allocated.
class VELSOCK_EXPORT SocketAddress {
public:
    // 0.0.0.0 and port 0
    SocketAddress();

    // The port in host byte order; only its low 16 bits are kept.
    SocketAddress(Octets octets, unsigned int port);

    SocketAddress(const SocketAddress& other);
    // Copies into this object's own record; allocates nothing.
    SocketAddress& operator=(const SocketAddress& other) noexcept;
    ~SocketAddress();

    // A copy of the address. Throws std::bad_alloc.
    Octets GetOctets() const;

    // The port in host byte order.
    unsigned short GetPort() const noexcept;

    // Every IPv4 address of the host, in the resolver's order, duplicates included; at least one. A
    // dotted name stands for that address, a null or empty one for this machine. Required: any name
    // that begins with the nine letters of "localhost" is looked up as "localhost".
    //
    // Throws Exception with SOCKET_ERR_HOST_NOT_FOUND, SOCKET_ERR_TRY_AGAIN, SOCKET_ERR_NO_RECOVERY
    // or SOCKET_ERR_NO_DATA when the name does not resolve, with SOCKET_ERR_NOTINITIALISED when the
    // layer is down, and with SOCKET_ERR_UNKNOWN when the host has no address; std::bad_alloc, and
    // std::length_error "string too long" for a name that no text can hold.
    static VelBase::ReturnPtrI<OctetsCollection> GetOctetsFromMachineName(const char* name);

    // The official name of the host with this address. Throws Exception with the same codes as
    // above when there is none, most often SOCKET_ERR_NO_DATA or SOCKET_ERR_HOST_NOT_FOUND; this
    // failure alone is not logged. Throws std::bad_alloc.
    static VelBase::ReturnString GetMachineNameFromOctets(Octets octets);

    // The address that a dotted text stands for, in all forms that the system's inet_addr takes:
    // one to four numbers, decimal, octal or hexadecimal, and whatever stands behind a blank
    // ("1.2.3.4 and more", "1", " "). Throws Exception with SOCKET_ERR_UNKNOWN for any other text,
    // null included; std::bad_alloc. Required: 255.255.255.255 is rejected as well, because
    // inet_addr answers it with the value that stands for a failure.
    static Octets ConvertDottedStringToOctets(const char* text);

    // The local host's name, of at most 199 characters. Throws Exception with SOCKET_ERR_FAULT for
    // a longer one and SOCKET_ERR_NOTINITIALISED when the layer is down; std::bad_alloc.
    static VelBase::ReturnString GetLocalMachineName();

    // The DNS domain that the machine is set up with: that of the first network interface that has
    // one, of which what the network gave (DHCP) comes first; the local host's name when there is
    // none. Required: an interface that has the value ends the search even when the value is empty,
    // and the host's name stands in. Read anew on every call from the machine's TCP/IP settings: on
    // Windows from the registry, elsewhere from the settings tree or the system's resolver
    // settings. Throws Exception with SOCKET_ERR_UNKNOWN when the settings cannot be read, and what
    // GetLocalMachineName throws; std::bad_alloc.
    static VelBase::ReturnString GetLocalMachineDomain();

    // The IPv4 addresses of the DNS servers that the machine is set up with, in their order,
    // duplicates included; at least one. Read like the domain. Required: here the last interface
    // comes first, and empty values are passed over. Throws Exception with SOCKET_ERR_UNKNOWN when
    // the settings cannot be read, name no server, or name one that is no dotted address;
    // std::bad_alloc.
    static VelBase::ReturnPtrI<OctetsCollection> GetLocalMachineDomainNameServer();

private:
    struct Record;
    Record* record_;
};

}  // namespace VelNet

// An IPv4 endpoint, and the resolution of host names.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnPtrI.h"
#include "VelBase/ReturnString.h"
#include "VelNet/Exception.h"
#include "VelNet/Octets.h"
#include "VelNet/OctetsCollection.h"
#include "VelNet/SocketInitialization.h"

namespace VelNet {

// An IPv4 address and a port: a value that owns its data. Copies are deep. Every constructor can
// throw std::bad_alloc. Each object belongs to one thread at a time.
//
// The static operations resolve names with the system's IPv4 functions, and two of them read the
// host's DNS settings. They keep no state, may be called from any thread, and block as long as the
// system's resolver does. The socket layer must be up (SocketInitialization). Names are UTF-8.
//
// Failures: unless an operation says otherwise, it logs its failure under "Error" and then throws
// Exception with a code that it lists under "Throws". Besides those, an operation can throw these:
//   SOCKET_ERR_NOTINITIALISED  the socket layer is down (operations that resolve, or ask for the
//                              local host's name)
//   std::bad_alloc             no memory
class VELSOCK_EXPORT SocketAddress {
public:
    // 0.0.0.0 and port 0
    SocketAddress();

    // The port is in host byte order; only its low 16 bits are used.
    SocketAddress(Octets octets, unsigned int port);

    // A deep copy.
    SocketAddress(const SocketAddress& other);
    // Copies the value; does not allocate.
    SocketAddress& operator=(const SocketAddress& other) noexcept;
    ~SocketAddress();

    // Returns a copy of the address. Throws std::bad_alloc.
    Octets GetOctets() const;

    // Returns the port in host byte order.
    unsigned short GetPort() const noexcept;

    // Returns all IPv4 addresses of a host, in the resolver's order and with duplicates; at least
    // one. A dotted name stands for that address, a null or empty one for the local host.
    //
    // Required: any name that begins with the nine letters of "localhost" is looked up as
    // "localhost".
    //
    // Throws: SOCKET_ERR_HOST_NOT_FOUND, SOCKET_ERR_TRY_AGAIN, SOCKET_ERR_NO_RECOVERY,
    //         SOCKET_ERR_NO_DATA  the name does not resolve
    //         SOCKET_ERR_UNKNOWN  the host has no address
    //         std::length_error   "string too long": no string can hold the name
    static VelBase::ReturnPtrI<OctetsCollection> GetOctetsFromMachineName(const char* name);

    // Returns the official name of the host with this address. A failure is not logged.
    //
    // Throws: SOCKET_ERR_NO_DATA, SOCKET_ERR_HOST_NOT_FOUND  there is none
    //         SOCKET_ERR_TRY_AGAIN, SOCKET_ERR_NO_RECOVERY   the resolver cannot tell
    static VelBase::ReturnString GetMachineNameFromOctets(Octets octets);

    // Returns the address that a dotted string stands for, in all forms that the system's inet_addr
    // accepts: one to four numbers, decimal, octal or hexadecimal, after which a space and anything
    // may follow ("1.2.3.4 and more", "1"). A single space stands for 0.0.0.0.
    //
    // Required: 255.255.255.255 is rejected, because inet_addr returns its failure value for it.
    //
    // Throws: SOCKET_ERR_UNKNOWN  any other string, or null
    static Octets ConvertDottedStringToOctets(const char* text);

    // Returns the local host's name.
    //
    // Throws: SOCKET_ERR_FAULT  the name is longer than 199 characters
    static VelBase::ReturnString GetLocalMachineName();

    // Returns the DNS domain that the local host is configured with: that of the first network
    // interface that has one; if it has both an assigned (DHCP) and a fixed domain, the assigned
    // one. If there is none, returns the local host's name.
    //
    // The TCP/IP settings are read on every call: on Windows from the registry, elsewhere from the
    // settings tree or the system's resolver settings.
    //
    // Required: the first interface with either setting ends the search, even if the setting is
    // empty; the result is the local host's name then.
    //
    // Throws: SOCKET_ERR_UNKNOWN  the settings cannot be read
    //         and what GetLocalMachineName throws
    static VelBase::ReturnString GetLocalMachineDomain();

    // Returns the IPv4 addresses of the DNS servers of one network interface of the local host, in
    // the order of its settings and with duplicates; at least one. Reads the same settings as
    // GetLocalMachineDomain; assigned (DHCP) servers are used in place of fixed ones.
    //
    // Required: here the interfaces are searched from the last to the first, and one whose settings
    // are empty does not end the search.
    //
    // Throws: SOCKET_ERR_UNKNOWN  the settings cannot be read, or name no server, or name one that
    //                             is not a dotted address
    static VelBase::ReturnPtrI<OctetsCollection> GetLocalMachineDomainNameServer();

private:
    friend class AddressWriter;
    struct Record;
    Record* record_;
};

}  // namespace VelNet

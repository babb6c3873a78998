#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "names/HostEntryStorage.h"
#include "names/LocalAddresses.h"
#include "names/ResolverErrors.h"
#include "sockets/KernelAddress.h"
#include "sockets/StartUp.h"
#include "system/Descriptors.h"
#include "system/HostName.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Posix;

constexpr std::size_t FirstRoom = 8192;
constexpr std::size_t MostRoom = std::size_t{1} << 24U;

Winsock::HostEntry* FailLookUp(WinsockError error) {
    Fail(error);
    return nullptr;
}

// Calls the system's resolver with growing buffers until the result fits. The query takes the host
// structure, the buffer, and where to store the found host and the resolver's error; it returns the
// system's error number.
template <typename Query>
Winsock::HostEntry* LookUp(Query query) {
    const CancellationGuard whole;
    for (std::size_t room = FirstRoom; room <= MostRoom; room *= 2) {
        HostEntryStorage* block = HostEntryOfThread(room);
        if (block == nullptr) break;
        hostent host = {};
        hostent* found = nullptr;
        int resolverError = NO_RECOVERY;
        const int error = query(host, *block, found, resolverError);
        if (found != nullptr) {
            Succeed();
            return FillFromHost(*block, host);
        }
        if (error != ERANGE) return FailLookUp(WinsockFromLookUp(resolverError, error));
    }
    return FailLookUp(WinsockError::NoRecovery);
}

Winsock::HostEntry* LookUpName(const char* name) {
    return LookUp([name](hostent& host, HostEntryStorage& block, hostent*& found, int& error) {
        return ::gethostbyname2_r(name, AF_INET, &host, block.Room(), block.room, &found, &error);
    });
}

// The layout of an entry that no resolver has filled: the lists of pointers, the addresses, the
// name.
Winsock::HostEntry* FillOwn(HostEntryStorage& block, const std::vector<KernelAddress>& addresses,
                            const char* name) {
    auto** pointers = static_cast<char**>(static_cast<void*>(block.Room()));
    char* bytes = static_cast<char*>(static_cast<void*>(pointers + addresses.size() + 2));
    char** aliases = pointers;
    *pointers++ = nullptr;
    for (const KernelAddress& address : addresses) {
        std::memcpy(bytes, &address.ipv4.sin_addr, sizeof(in_addr));
        *pointers++ = bytes;
        bytes += sizeof(in_addr);
    }
    *pointers = nullptr;
    std::memcpy(bytes, name, std::strlen(name) + 1);
    block.entry = {bytes, aliases, Winsock::FamilyIpv4, sizeof(in_addr), aliases + 1};
    return &block.entry;
}

Winsock::HostEntry* NewEntry(const std::vector<KernelAddress>& addresses, const std::string& name) {
    const std::size_t room = (addresses.size() + 2) * sizeof(char*) +
                             addresses.size() * sizeof(in_addr) + name.size() + 1;
    HostEntryStorage* block = HostEntryOfThread(room);
    if (block == nullptr) return FailLookUp(WinsockError::NoRecovery);
    Succeed();
    return FillOwn(*block, addresses, name.c_str());
}

bool IsLoopbackOnly(const Winsock::HostEntry& entry) noexcept {
    in_addr address = {};
    for (char** next = entry.addresses; *next != nullptr; ++next) {
        std::memcpy(&address, *next, sizeof address);
        if (!IsLoopback(address)) return false;
    }
    return true;
}

// The local host's own name must resolve, even if no table and no server knows it or they know only
// loopback addresses, which others cannot reach. The entry is the resolver's result, or null with
// an error.
Winsock::HostEntry* LocalHost(Winsock::HostEntry* entry, const char* name) {
    if (entry == nullptr && !MeansUnknown(lastError, name)) return nullptr;
    std::vector<KernelAddress> addresses;
    if (IsError(FindLocalAddresses(AF_INET, addresses)))
        return FailLookUp(WinsockError::NoRecovery);
    if (entry != nullptr && IsLoopbackOnly(addresses)) return entry;
    HostNameText own;
    HostName(own);
    return NewEntry(addresses, entry != nullptr ? entry->name : own.text);
}

Winsock::HostEntry* Host(const char* name) {
    Winsock::HostEntry* entry = LookUpName(name);
    if (entry != nullptr && !IsLoopbackOnly(*entry)) return entry;
    if (IsLocalHostName(name)) return LocalHost(entry, name);
    const bool isUntold = entry == nullptr && MeansUntold(lastError);
    return isUntold && IsLocalhost(name) ? NewEntry({Ipv4Loopback()}, name) : entry;
}

Winsock::HostEntry* OwnHost() {
    HostNameText own;
    const WinsockError error = HostName(own);
    return IsError(error) ? FailLookUp(error) : Host(own.text);
}

// Winsock's calls do not throw.
Winsock::HostEntry* HostOrNone(const char* name) try {
    return name == nullptr || *name == '\0' ? OwnHost() : Host(name);
} catch (const std::bad_alloc&) {
    return FailLookUp(WinsockError::NoRecovery);
}

WinsockError AddressQueryError(const char* address, int length, const AddressFamily* family) {
    if (family == nullptr) return WinsockError::AddressFamilyNotSupported;
    const bool whole = address != nullptr && std::cmp_greater_equal(length, family->hostLength);
    return whole ? WinsockError::None : WinsockError::Fault;
}

Winsock::HostEntry* LookUpAddress(const char* address, const AddressFamily& family) {
    return LookUp([=](hostent& host, HostEntryStorage& block, hostent*& found, int& error) {
        return ::gethostbyaddr_r(address, family.hostLength, family.kernel, &host, block.Room(),
                                 block.room, &found, &error);
    });
}

}  // namespace

Winsock::HostEntry* Winsock::gethostbyname(const char* name) {
    if (!RequireStarted()) return nullptr;
    return HostOrNone(name);
}

Winsock::HostEntry* Winsock::gethostbyaddr(const char* address, int length, int family) {
    if (!RequireStarted()) return nullptr;
    const AddressFamily* const known = FamilyFromWinsock(family);
    if (const auto error = AddressQueryError(address, length, known); IsError(error))
        return FailLookUp(error);
    HostEntry* entry = LookUpAddress(address, *known);
    // An address without a name is "no data", not "host not found".
    if (entry == nullptr && lastError == WinsockError::HostNotFound) Fail(WinsockError::NoData);
    return entry;
}

int Winsock::gethostname(char* name, int length) {
    if (!RequireStarted()) return SocketError;
    HostNameText own;
    if (const auto error = HostName(own); IsError(error)) return Fail(error);
    const std::size_t needed = std::strlen(own.text) + 1;
    if (name == nullptr || length < static_cast<int>(needed)) return Fail(WinsockError::Fault);
    std::memcpy(name, own.text, needed);
    return Succeed();
}

unsigned int Winsock::inet_addr(const char* text) {
    if (text == nullptr) {
        Fail(WinsockError::Fault);
        return NoAddress;
    }
    // Required (NameDottedText.IsReadAsTheSystemReadsIt): a single space is 0.0.0.0.
    if (std::strcmp(text, " ") == 0) return 0;
    in_addr address = {};
    return ::inet_aton(text, &address) != 0 ? address.s_addr : NoAddress;
}

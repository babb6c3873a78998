// The resolvers, the addresses and the cache when a call of the system fails or answers oddly.
#include <VelNet/SocketAddressCache.h>

#include "AddressFields.h"
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// The resolvers

{"GetOctetsFromMachineName", R"(
    gethostbyname("host")             -> 10.0.0.1 10.0.0.2 10.0.0.1
    returns 10.0.0.1 10.0.0.2 10.0.0.1
)"},
{"GetOctetsFromMachineName", R"(
    gethostbyname("host")             -> nothing
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL The host name supplied does not have an ip address. Connection = {host}
)"},
{"GetOctetsFromMachineName", R"(
    gethostbyname("host")             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {host}, errno = {n}
)"},
{"GetOctetsFromMachineName of localhost and more", R"(
    gethostbyname("localhost")        -> 127.0.0.1
    returns 127.0.0.1
)"},
{"GetOctetsFromMachineName of localhost and more", R"(
    gethostbyname("localhost")        -> nothing
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL The host name supplied does not have an ip address. Connection = {localhost}
)"},
{"GetOctetsFromMachineName of localhost and more", R"(
    gethostbyname("localhost")        fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {localhost}, errno = {n}
)"},
{"GetMachineNameFromOctets", R"(
    gethostbyaddr(10.0.0.7, 4, 2)     -> named host.example
    returns host.example
)"},
{"GetMachineNameFromOctets", R"(
    gethostbyaddr(10.0.0.7, 4, 2)     fails
    WSAGetLastError()
    throws VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is not resolvable on this machine. Connection = {10.0.0.7}, errno = {n}
)"},
{"ConvertDottedStringToOctets", R"(
    inet_addr("10.0.0.7")
    returns 10.0.0.7
)"},
{"ConvertDottedStringToOctets", R"(
    inet_addr("10.0.0.7")             -> 0
    returns 0.0.0.0
)"},
{"ConvertDottedStringToOctets", R"(
    inet_addr("10.0.0.7")             -> 4294967294
    returns 254.255.255.255
)"},
{"ConvertDottedStringToOctets", R"(
    inet_addr("10.0.0.7")             fails
    log Error
    throws VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is not an Internet Protocol dotted address: 10.0.0.7
)"},
{"GetLocalMachineName", R"(
    gethostname(200)                  -> here
    returns here
)"},
{"GetLocalMachineName", R"(
    gethostname(200)                  fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not configured on this machine., errno = {n}
)"},
{"GetLocalMachineName", R"(
    gethostname(200)                  fails returning 1
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not configured on this machine., errno = {n}
)"},

// Endpoints: a host without a name is no failure.

{"Address of octets", R"(
    gethostbyaddr(10.0.0.7, 4, 2)     -> named seven.example
    returns 10.0.0.7 10.0.0.7 seven.example 80 yes
)"},
{"Address of octets", R"(
    gethostbyaddr(10.0.0.7, 4, 2)     fails
    WSAGetLastError()
    returns 10.0.0.7 10.0.0.7 10.0.0.7 80 yes
)"},
{"Address of a host", R"(
    gethostbyname("host")             -> 10.0.0.7 10.0.0.8
    gethostbyaddr(10.0.0.7, 4, 2)     -> named seven.example
    returns 10.0.0.7 10.0.0.7 seven.example 80 yes
)"},
{"Address of a host", R"(
    gethostbyname("host")             -> 10.0.0.7
    gethostbyaddr(10.0.0.7, 4, 2)     fails
    WSAGetLastError()
    returns 10.0.0.7 10.0.0.7 10.0.0.7 80 yes
)"},
{"Address of a host", R"(
    gethostbyname("host")             -> nothing
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL The host name supplied does not have an ip address. Connection = {host}
)"},
{"Address of a host", R"(
    gethostbyname("host")             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {host}, errno = {n}
)"},
{"Address of loopback", R"(
    gethostbyaddr(127.0.0.1, 4, 2)    -> named localhost
    returns 127.0.0.1 127.0.0.1 localhost 80 yes
)"},
{"Address of loopback", R"(
    gethostbyaddr(127.0.0.1, 4, 2)    fails
    WSAGetLastError()
    returns 127.0.0.1 127.0.0.1 127.0.0.1 80 yes
)"},
{"Address of any", R"(
    gethostbyaddr(0.0.0.0, 4, 2)      -> named all
    returns 0.0.0.0 0.0.0.0 all 80 yes
)"},
{"Address of any", R"(
    gethostbyaddr(0.0.0.0, 4, 2)      fails
    WSAGetLastError()
    returns 0.0.0.0 0.0.0.0 0.0.0.0 80 yes
)"},
{"Address of what has no name", R"(
    gethostbyaddr(0.0.0.0, 4, 2)      -> named all
    returns 0.0.0.0 0.0.0.0 all 80 yes
)"},
{"Address of what has no name", R"(
    gethostbyaddr(0.0.0.0, 4, 2)      fails
    WSAGetLastError()
    returns 0.0.0.0 0.0.0.0 0.0.0.0 80 yes
)"},
{"Address of this machine", R"(
    gethostname(200)                  -> here
    gethostbyname("here")             -> 10.0.0.7 10.0.0.8
    gethostbyaddr(10.0.0.7, 4, 2)     -> named here.example
    returns 10.0.0.7 10.0.0.7 here.example 80 yes
)"},
{"Address of this machine", R"(
    gethostname(200)                  -> here
    gethostbyname("here")             -> 10.0.0.7
    gethostbyaddr(10.0.0.7, 4, 2)     fails
    WSAGetLastError()
    returns 10.0.0.7 10.0.0.7 10.0.0.7 80 yes
)"},
{"Address of this machine", R"(
    gethostname(200)                  -> here
    gethostbyname("here")             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {here}, errno = {n}
)"},
{"Address of this machine", R"(
    gethostname(200)                  fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not configured on this machine., errno = {n}
)"},

// The cache: what is known is not asked for again, a failure is not kept.

{"ask the cache twice for a host", R"(
    gethostbyname("host")             -> 10.0.0.7 10.0.0.8
    returns 10.0.0.7 10.0.0.7
)"},
{"ask the cache twice for a host", R"(
    gethostbyname("host")             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {host}, errno = {n}
)"},
{"ask the cache again after a failure", R"(
    gethostbyname("host")             fails
    WSAGetLastError()
    log Error
    gethostbyname("host")             -> 10.0.0.9
    tells VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {host}, errno = {n}
    returns 10.0.0.9
)"},
{"ask the cache again after a failure", R"(
    gethostbyname("host")             -> 10.0.0.8
    returns 10.0.0.8
)"},
{"ask the cache again after a failure", R"(
    gethostbyname("host")             fails 11002
    WSAGetLastError()
    log Error: VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {host}, errno = {11002}
    gethostbyname("host")             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not resolvable on this machine. Connection = {host}, errno = {n}
)"},
{"ask the cache twice for an address", R"(
    gethostbyaddr(10.0.0.7, 4, 2)     -> named seven.example
    returns seven.example seven.example
)"},
{"ask the cache twice for an address", R"(
    gethostbyaddr(10.0.0.7, 4, 2)     fails
    WSAGetLastError()
    throws VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is not resolvable on this machine. Connection = {10.0.0.7}, errno = {n}
)"},
};
// clang-format on

// An operation without an object.
std::function<Trial()> Asking(const std::function<std::string()>& question) {
    return [=] { return Trial{.act = question}; };
}

std::string TextOf(const Octets& octets) {
    return octets.GetAddressString().c_str();
}

std::function<Trial()> AddressesOf(const char* host) {
    return Asking([=] {
        const auto addresses = SocketAddress::GetOctetsFromMachineName(host);
        std::string texts;
        for (unsigned int index = 0; index < addresses->GetCount(); ++index)
            texts += (index == 0 ? "" : " ") + TextOf(addresses->GetOctets(index));
        return texts;
    });
}

std::string TextOf(const Address& address) {
    const AddressFields fields = FieldsOf(address);
    return fields.ip + ' ' + fields.octets + ' ' + fields.machine + ' ' +
           std::to_string(fields.port) + (fields.isInitialized ? " yes" : " no");
}

template <class Place>
std::function<Trial()> AddressOf(const Place& place) {
    return Asking([=] { return TextOf(Address(place, 80)); });
}

// The cache lives as long as the trial.
std::function<Trial()> Caching(const std::function<std::string(SocketAddressCache&)>& question) {
    return [=] {
        const auto cache =
            std::make_shared<VelBase::ReturnPtrI<SocketAddressCache>>(CreateSocketAddressCache());
        return Trial{.act = [=] { return question(**cache); }};
    };
}

std::string AskTwiceForAHost(SocketAddressCache& cache) {
    const std::string first = TextOf(cache.GetOctetsFromMachineName("host"));
    return first + ' ' + TextOf(cache.GetOctetsFromMachineName("host"));
}

std::string AskTwiceForAnAddress(SocketAddressCache& cache) {
    const std::string first = cache.GetMachineNameFromOctets(Octets(10, 0, 0, 7)).c_str();
    return first + ' ' + cache.GetMachineNameFromOctets(Octets(10, 0, 0, 7)).c_str();
}

std::string AskAgainAfterAFailure(SocketAddressCache& cache) {
    try {
        return TextOf(cache.GetOctetsFromMachineName("host"));
    } catch (const Exception&) {
        return TextOf(cache.GetOctetsFromMachineName("host"));
    }
}

std::function<Trial()> SpecialAddress(int kind) {
    return AddressOf(static_cast<Address::SpecialAddress>(kind));
}

const FaultTable Table = {
    {
        {"GetOctetsFromMachineName", AddressesOf("host")},
        {"GetOctetsFromMachineName of localhost and more", AddressesOf("localhost.example")},
        {"GetMachineNameFromOctets", Asking([] {
             return std::string(
                 SocketAddress::GetMachineNameFromOctets(Octets(10, 0, 0, 7)).c_str());
         })},
        {"ConvertDottedStringToOctets",
         Asking([] { return TextOf(SocketAddress::ConvertDottedStringToOctets("10.0.0.7")); })},
        {"GetLocalMachineName",
         Asking([] { return std::string(SocketAddress::GetLocalMachineName().c_str()); })},
        {"Address of octets", Asking([] { return TextOf(Address(Octets(10, 0, 0, 7), 80)); })},
        {"Address of a host", AddressOf("host")},
        {"Address of loopback", SpecialAddress(0)},
        {"Address of any", SpecialAddress(1)},
        {"Address of this machine", SpecialAddress(2)},
        {"Address of what has no name", SpecialAddress(7)},
        {"ask the cache twice for a host", Caching(AskTwiceForAHost)},
        {"ask the cache again after a failure", Caching(AskAgainAfterAFailure)},
        {"ask the cache twice for an address", Caching(AskTwiceForAnAddress)},
    },
    Stories};

class FaultsOfNames : public SocketTest {};

TEST_F(FaultsOfNames, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfNames, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfNames, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests

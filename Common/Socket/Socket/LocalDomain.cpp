// Reads the DNS domain and servers from the local host's settings.
#include "Platform/System.h"
#include "Socket/FailureText.h"
#include "VelBase/LibraryConversions.h"
#include "VelBase/TextConversions.h"
#include "VelBase/WideLiteral.h"
#include "VelNet/SocketAddress.h"
#include "VelRegistry/Key.h"
#include "VelRegistry/KeyException.h"

#include <memory>
#include <string>

namespace VelNet {

using VelBase::operator""_wide;

namespace {

// Old systems keep one set of values, newer ones a set per network interface.
constexpr const unsigned short* ParametersPath =
    "System\\CurrentControlSet\\Services\\Tcpip\\Parameters"_wide;
constexpr const unsigned short* InterfacesPath =
    "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces"_wide;

constexpr const unsigned short* Domain = "Domain"_wide;
constexpr const unsigned short* DhcpDomain = "DhcpDomain"_wide;
constexpr const unsigned short* NameServer = "NameServer"_wide;
constexpr const unsigned short* DhcpNameServer = "DhcpNameServer"_wide;

constexpr unsigned int FirstVersionWithInterfaces = 5;

bool HasInterfaces() {
    System::VersionRecord version = {};
    version.size = sizeof version;
    return !System::GetVersionExW(&version) || version.majorVersion >= FirstVersionWithInterfaces;
}

VelRegistry::KeyOwner OpenSettings(const unsigned short* path) {
    return VelRegistry::KeyOwner(
        VelRegistry::OpenKeyFromRoot(VelRegistry::ROOT_LOCAL_MACHINE, path, false));
}

bool IsEmpty(const VelBase::ReturnWString& text) noexcept {
    return *text.c_str() == 0;
}

// Returns the first of the two values that exists and is not empty, or the empty text.
VelBase::ReturnWString ReadEither(const VelRegistry::Key& key, const unsigned short* first,
                                  const unsigned short* second) {
    VelBase::ReturnWString text;
    if (key.HasValue(first)) text = key.ReadText(first);
    if (IsEmpty(text) && key.HasValue(second)) text = key.ReadText(second);
    return text;
}

VelBase::ReturnWString ReadFromParameters(const unsigned short* first,
                                          const unsigned short* second) {
    const VelRegistry::KeyOwner parameters = OpenSettings(ParametersPath);
    return parameters != nullptr ? ReadEither(*parameters, first, second)
                                 : VelBase::ReturnWString();
}

// The network interfaces, in the registry's order.
class Interfaces {
public:
    Interfaces() : key_(OpenSettings(InterfacesPath)) {
        if (key_ != nullptr) names_.reset(key_->ListSubKeys());
    }

    unsigned int Count() const noexcept { return names_ != nullptr ? names_->GetCount() : 0; }

    // Returns null for an interface that has disappeared.
    VelRegistry::KeyOwner Open(unsigned int index) const {
        return VelRegistry::KeyOwner(key_->OpenSubKey(names_->GetItem(index), false));
    }

private:
    VelRegistry::KeyOwner key_;
    std::unique_ptr<VelRegistry::KeyList> names_;
};

// Required (LocalDomain.EmptyDhcpDomainEndsTheWalk): the first interface that has either value ends
// the search, even if the text is empty.
VelBase::ReturnWString ReadDomainOfInterfaces() {
    const Interfaces interfaces;
    for (unsigned int index = 0; index < interfaces.Count(); ++index) {
        const VelRegistry::KeyOwner interface = interfaces.Open(index);
        if (interface == nullptr) continue;
        for (const unsigned short* const name : {DhcpDomain, Domain}) {
            if (interface->HasValue(name)) return interface->ReadText(name);
        }
    }
    return {};
}

// Required (NameServers.NewerLayoutIsReadFromTheInterfacesKeyBackwards): from the last interface to
// the first, skipping those whose texts are empty.
VelBase::ReturnWString ReadNameServersOfInterfaces() {
    const Interfaces interfaces;
    for (unsigned int index = interfaces.Count(); index-- > 0;) {
        const VelRegistry::KeyOwner interface = interfaces.Open(index);
        if (interface == nullptr) continue;
        VelBase::ReturnWString servers = ReadEither(*interface, DhcpNameServer, NameServer);
        if (!IsEmpty(servers)) return servers;
    }
    return {};
}

// Required (LocalDomain.WithinAnInterfaceDhcpWins): the precedence of the two values is the reverse
// of that for interfaces.
VelBase::ReturnWString ReadDomain() {
    return HasInterfaces() ? ReadDomainOfInterfaces() : ReadFromParameters(Domain, DhcpDomain);
}

VelBase::ReturnWString ReadNameServers() {
    return HasInterfaces() ? ReadNameServersOfInterfaces()
                           : ReadFromParameters(NameServer, DhcpNameServer);
}

[[noreturn]] void ThrowNotConfigured(const unsigned short* label, const unsigned short* reason) {
    VelBase::WideText text =
        BeginFailureText(label, "The TCP protocol is not configured on this machine."_wide);
    text.Append(" Registry error: "_wide).Append(reason);
    ThrowFailure(text, SOCKET_ERR_UNKNOWN);
}

template <class Read>
VelBase::ReturnWString ReadSettings(Read read, const unsigned short* label) {
    try {
        return read();
    } catch (const VelRegistry::KeyException& failure) {
        ThrowNotConfigured(label, failure.GetMessage());
    }
}

bool IsPartOfAddress(unsigned short unit) noexcept {
    return (unit >= '0' && unit <= '9') || unit == '.';
}

void AddToken(OctetsCollection& addresses, std::string& token) {
    if (token.empty()) return;
    addresses.Add(SocketAddress::ConvertDottedStringToOctets(token.c_str()));
    token.clear();
}

// Everything except digits and dots separates addresses.
void AddAddresses(OctetsCollection& addresses, const unsigned short* text) {
    std::string token;
    for (; *text != 0; ++text) {
        if (IsPartOfAddress(*text))
            token += VelBase::WideCharToUTF8UsingLength(text, 1, false).c_str();
        else
            AddToken(addresses, token);
    }
    AddToken(addresses, token);
}

}  // namespace

VelBase::ReturnString SocketAddress::GetLocalMachineDomain() {
    const VelBase::ReturnWString domain =
        ReadSettings(ReadDomain, "VelNet::SocketAddress::GetLocalMachineDomain() - FAIL."_wide);
    if (IsEmpty(domain)) return GetLocalMachineName();
    return VelBase::WideCharToUTF8(domain.c_str(), false);
}

VelBase::ReturnPtrI<OctetsCollection> SocketAddress::GetLocalMachineDomainNameServer() {
    constexpr const unsigned short* label =
        "VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL."_wide;
    VelBase::ReturnPtrI<OctetsCollection> addresses(CreateOctetsCollection());
    AddAddresses(*addresses, ReadSettings(ReadNameServers, label).c_str());
    if (addresses->GetCount() == 0)
        ThrowNotConfigured(label, "NameServer and DhcpNameServer keys are not set up"_wide);
    return addresses;
}

}  // namespace VelNet

#include "VelNet/SocketAddress.h"

#include "Platform/Winsock.h"
#include "Socket/AddressWriter.h"
#include "Socket/ClearForGood.h"
#include "Socket/FailureText.h"
#include "Text/Decimal.h"
#include "VelBase/LengthLimit.h"
#include "VelBase/TextConversions.h"
#include "VelBase/WideLiteral.h"

#include <cstring>
#include <string>
#include <string_view>

namespace VelNet {

using VelBase::operator""_wide;

struct SocketAddress::Record {
    Octets address;
    unsigned short port;
};

namespace {

constexpr int HostNameRoom = 200;

// Required (HostResolution.NamesThatBeginWithLocalhostAreLookedUpAsJustThat): a name that begins
// with these nine letters is looked up as these letters.
constexpr std::string_view LocalHost = "localhost";

std::string NameToLookUp(const char* name) {
    if (name == nullptr) return {};
    const std::string_view given = name;
    if (given.starts_with(LocalHost)) return std::string(LocalHost);

    VelBase::RequireRoom(0, given.size(), std::string().max_size(), VelBase::StringTooLong);
    return std::string(given);
}

Octets OctetsFrom(const char* bytes) {
    return {static_cast<unsigned char>(bytes[0]), static_cast<unsigned char>(bytes[1]),
            static_cast<unsigned char>(bytes[2]), static_cast<unsigned char>(bytes[3])};
}

// A failure text with the name that was looked up: description, " Connection = {", the name.
VelBase::WideText BeginLookUpFailure(const unsigned short* label, const unsigned short* description,
                                     const char* lookedUp) {
    VelBase::WideText text = BeginFailureText(label, description);
    text.Append(" Connection = {"_wide).Append(VelBase::UTF8ToWideChar(lookedUp, false));
    return text;
}

[[noreturn]] void ThrowNotResolvable(const std::string& name, int error) {
    VelBase::WideText text = BeginLookUpFailure(
        "VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL."_wide,
        "The host name supplied is not resolvable on this machine."_wide, name.c_str());
    AppendError(text, "}, errno = "_wide, error);
    ThrowFailure(text, Exception::GetSocketError(error));
}

[[noreturn]] void ThrowWithoutAddress(const std::string& name) {
    // Required (HostResolution.HostWithoutAddressIsToldWithoutPointAndNumber): no dot after FAIL.
    VelBase::WideText text = BeginLookUpFailure(
        "VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL"_wide,
        "The host name supplied does not have an ip address."_wide, name.c_str());
    text.Append("}"_wide);
    ThrowFailure(text, SOCKET_ERR_UNKNOWN);
}

// Required (ReverseResolution.EachFailureIsThrownWithoutALog): this failure is thrown without being
// logged, unlike all others.
[[noreturn]] void ThrowNameless(const Octets& octets, int error) {
    // Required (ReverseResolution.AddressWithoutNameIsToldWithoutPointAndWithTheNumberAsOneUnit):
    // no dot after FAIL.
    VelBase::WideText text =
        BeginLookUpFailure("VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL"_wide,
                           "The address supplied is not resolvable on this machine."_wide,
                           octets.GetAddressString().c_str());
    AppendError(text, "}, errno = "_wide, error);
    throw Exception(text.Units(), Exception::GetSocketError(error));
}

[[noreturn]] void ThrowNotDotted(const char* dotted) {
    VelBase::WideText text =
        BeginFailureText("VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL."_wide,
                         "The input parameter is not an Internet Protocol dotted address: "_wide);
    text.Append(VelBase::UTF8ToWideChar(dotted, false));
    ThrowFailure(text, SOCKET_ERR_UNKNOWN);
}

}  // namespace

SocketAddress::SocketAddress() : record_(new Record{Octets(), 0}) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the value.
SocketAddress::SocketAddress(Octets octets, unsigned int port)
    : record_(new Record{octets, static_cast<unsigned short>(port & 0xFFFFU)}) {}

SocketAddress::SocketAddress(const SocketAddress& other) : record_(new Record(*other.record_)) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): copying a record onto itself changes nothing.
SocketAddress& SocketAddress::operator=(const SocketAddress& other) noexcept {
    record_->port = other.record_->port;
    record_->address = other.record_->address;
    return *this;
}

SocketAddress::~SocketAddress() {
    delete record_;
    ClearForGood(record_);
}

void AddressWriter::Write(const Winsock::AddressIpv4& source, SocketAddress& target) noexcept {
    SocketAddress::Record& record = *target.record_;
    std::memcpy(record.address.bytes_, source.address, sizeof source.address);
    record.port = static_cast<unsigned short>(source.port[0] << 8 | source.port[1]);
}

DottedText AddressWriter::Dotted(const SocketAddress& source) noexcept {
    const unsigned char* const bytes = source.record_->address.bytes_;
    DottedText dotted;
    Text::PutDotted(dotted.text, {bytes[0], bytes[1], bytes[2], bytes[3]});
    return dotted;
}

Octets SocketAddress::GetOctets() const {
    return record_->address;
}

unsigned short SocketAddress::GetPort() const noexcept {
    return record_->port;
}

VelBase::ReturnPtrI<OctetsCollection> SocketAddress::GetOctetsFromMachineName(const char* name) {
    const std::string lookedUp = NameToLookUp(name);
    const Winsock::HostEntry* const host = Winsock::gethostbyname(lookedUp.c_str());
    if (host == nullptr) {
        const int error = Winsock::WSAGetLastError();
        ThrowNotResolvable(lookedUp, error);
    }

    VelBase::ReturnPtrI<OctetsCollection> addresses(CreateOctetsCollection());
    for (char** address = host->addresses; *address != nullptr; ++address) {
        addresses->Add(OctetsFrom(*address));
    }
    if (addresses->GetCount() == 0) ThrowWithoutAddress(lookedUp);
    return addresses;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the value.
VelBase::ReturnString SocketAddress::GetMachineNameFromOctets(Octets octets) {
    const char address[] = {
        static_cast<char>(octets.GetOctet1()), static_cast<char>(octets.GetOctet2()),
        static_cast<char>(octets.GetOctet3()), static_cast<char>(octets.GetOctet4())};
    const Winsock::HostEntry* const host =
        Winsock::gethostbyaddr(address, sizeof address, Winsock::FamilyIpv4);
    if (host == nullptr) {
        const int error = Winsock::WSAGetLastError();
        ThrowNameless(octets, error);
    }
    return {host->name};
}

Octets SocketAddress::ConvertDottedStringToOctets(const char* text) {
    const unsigned int address = Winsock::inet_addr(text);
    // Required (DottedText.BroadcastAddressIsRejected): 255.255.255.255 is that number too.
    if (address == Winsock::NoAddress) ThrowNotDotted(text);

    char bytes[sizeof address];
    std::memcpy(bytes, &address, sizeof address);
    return OctetsFrom(bytes);
}

VelBase::ReturnString SocketAddress::GetLocalMachineName() {
    char name[HostNameRoom] = {};
    if (Winsock::gethostname(name, sizeof name) != 0) {
        const int error = Winsock::WSAGetLastError();
        ThrowSystemFailure("VelNet::SocketAddress::GetLocalMachineName() - FAIL."_wide,
                           "The host name is not configured on this machine."_wide, error);
    }
    return {name};
}

}  // namespace VelNet

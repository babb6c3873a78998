// From host and service texts to lists of addresses.
#include <Platform/Winsock.h>
#include <netdb.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "errors/Errors.h"
#include "names/AddressInfoList.h"
#include "names/LocalAddresses.h"
#include "names/NumericHosts.h"
#include "names/ResolverErrors.h"
#include "sockets/StartUp.h"
#include "system/HostName.h"

namespace {

using namespace Posix;

struct SystemListFreer {
    void operator()(addrinfo* list) const noexcept { ::freeaddrinfo(list); }
};
using SystemList = std::unique_ptr<addrinfo, SystemListFreer>;

// What is asked for, in the system's terms; null for a text that is not given.
struct Question {
    const char* host;
    const char* service;
    addrinfo hints;
};

// A type of its own for each service, but any protocol: the system would refuse odd pairs, and
// would answer each address once for each type.
addrinfo SystemHints(const Winsock::AddressInfo& hints) noexcept {
    const bool datagrams =
        hints.type == Winsock::TypeDatagram || hints.protocol == Winsock::ProtocolUdp;
    addrinfo result = {};
    result.ai_family = hints.family == Winsock::FamilyIpv6   ? AF_INET6
                       : hints.family == Winsock::FamilyIpv4 ? AF_INET
                                                             : AF_UNSPEC;
    result.ai_socktype = datagrams ? SOCK_DGRAM : SOCK_STREAM;
    return result;
}

int HintsError(const Winsock::AddressInfo& hints) noexcept {
    if (hints.flags != 0) return WinsockError::Invalid;
    const bool family = hints.family == Winsock::FamilyUnspecified ||
                        hints.family == Winsock::FamilyIpv4 || hints.family == Winsock::FamilyIpv6;
    if (!family) return WinsockError::AddressFamilyNotSupported;
    const bool type =
        hints.type == 0 || hints.type == Winsock::TypeStream || hints.type == Winsock::TypeDatagram;
    return type ? 0 : WinsockError::SocketTypeNotSupported;
}

// The system takes a star for a text that is not given; here it is a name that nobody has.
bool IsStar(const char* text) noexcept {
    return text != nullptr && std::strcmp(text, "*") == 0;
}

int TextsError(const char* host, const char* service) noexcept {
    if (host == nullptr && service == nullptr) return WinsockError::HostNotFound;
    if (IsStar(service)) return WinsockError::ServiceNotFound;
    return IsStar(host) ? WinsockError::HostNotFound : 0;
}

bool ParsePortOrNone(const char* service, std::uint16_t& port) noexcept {
    port = 0;
    return service == nullptr || *service == '\0' || ParseNumericPort(service, port);
}

// Answers what consists of numbers; false when the system has to be asked.
bool AnswerNumbers(const Question& question, AddressInfoList& list) {
    std::uint16_t port = 0;
    KernelAddress address = {};
    if (question.host == nullptr || !ParsePortOrNone(question.service, port)) return false;
    if (!ParseNumericHost(question.host, address)) return false;
    const int family = question.hints.ai_family;
    if (family != AF_UNSPEC && family != address.any.sa_family) return false;
    list.Append(WithPort(address, port));
    return true;
}

int AskSystem(const Question& question, SystemList& found) {
    return Ask([&] {
        addrinfo* list = nullptr;
        const int error = ::getaddrinfo(question.host, question.service, &question.hints, &list);
        if (error == 0) found.reset(list);
        return error;
    });
}

KernelAddress AddressOf(const addrinfo& info) noexcept {
    KernelAddress address = {};
    const bool ipv6 = info.ai_family == AF_INET6;
    std::memcpy(&address, info.ai_addr, ipv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in));
    return address;
}

// Numbers first, then the system's tables and servers.
int AnswerHost(const Question& question, AddressInfoList& list) {
    if (AnswerNumbers(question, list)) return 0;
    SystemList found;
    if (const int error = AskSystem(question, found)) return error;
    for (const addrinfo* next = found.get(); next != nullptr; next = next->ai_next) {
        list.Append(AddressOf(*next));
    }
    return 0;
}

// The service's port, which is the same for all hosts.
int FindPort(const Question& question, std::uint16_t& port) {
    if (ParsePortOrNone(question.service, port)) return 0;
    SystemList found;
    Question service = question;
    service.host = nullptr;
    const int error = AskSystem(service, found);
    if (error == 0) port = PortOf(AddressOf(*found));
    return error;
}

int AnswerLocalAddresses(const Question& question, AddressInfoList& list) {
    std::uint16_t port = 0;
    if (const int error = FindPort(question, port)) return error;
    for (const KernelAddress& address : LocalAddresses(question.hints.ai_family)) {
        list.Append(WithPort(address, port));
    }
    return list.IsEmpty() ? WinsockError::HostNotFound : 0;
}

// A computer knows itself, though no table and no server may know it. A service that nobody knows
// stays unknown.
int AnswerName(const Question& question, AddressInfoList& list) {
    const int error = AnswerHost(question, list);
    HostNameText own;
    const bool standIn = error != 0 && HostName(own) == 0 && IsLocalHostName(question.host, own);
    return standIn ? AnswerLocalAddresses(question, list) : error;
}

int AnswerOwnName(Question question, AddressInfoList& list) {
    HostNameText own;
    if (const int error = HostName(own)) return error;
    question.host = own.text;
    return AnswerName(question, list);
}

// "[literal]" or "[literal]:port", where the port counts for nothing.
bool ParseBrackets(const std::string& text, std::string& literal) {
    const std::size_t end = text.find(']');
    if (end == std::string::npos) return false;
    literal = text.substr(1, end - 1);
    const std::string rest = text.substr(end + 1);
    std::uint16_t port = 0;
    const bool hasPort = rest.starts_with(':') && ParseNumericPort(rest.c_str() + 1, port);
    return literal.find(':') != std::string::npos && (rest.empty() || hasPort);
}

int AnswerLiteral(Question question, AddressInfoList& list) {
    std::string literal;
    if (!ParseBrackets(question.host, literal)) return WinsockError::HostNotFound;
    question.host = literal.c_str();
    question.hints.ai_flags = AI_NUMERICHOST;
    return AnswerHost(question, list);
}

int Answer(const char* host, const char* service, const Winsock::AddressInfo& hints,
           AddressInfoList& list) {
    if (const int error = TextsError(host, service)) return error;
    if (const int error = HintsError(hints)) return error;
    const Question question = {.host = host, .service = service, .hints = SystemHints(hints)};
    if (host == nullptr) return AnswerHost(question, list);
    if (*host == '\0') return AnswerOwnName(question, list);
    return *host == '[' ? AnswerLiteral(question, list) : AnswerName(question, list);
}

// Winsock's calls do not throw.
int AnswerOrFail(const char* host, const char* service, const Winsock::AddressInfo& hints,
                 AddressInfoList& list) try {
    return IsStarted() ? Answer(host, service, hints, list) : WinsockError::NotStarted;
} catch (const std::bad_alloc&) {
    return WinsockError::NotEnoughMemory;
}

}  // namespace

int Winsock::getaddrinfo(const char* host, const char* service, const AddressInfo* hints,
                         AddressInfo** result) {
    if (result == nullptr) return lastError = WinsockError::Fault;
    const AddressInfo given = hints != nullptr ? *hints : AddressInfo{};
    AddressInfoList list(given);
    const int error = AnswerOrFail(host, service, given, list);
    *result = error == 0 ? list.Take() : nullptr;
    return lastError = error;
}

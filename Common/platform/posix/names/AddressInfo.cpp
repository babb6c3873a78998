// getaddrinfo: from host and service strings to lists of addresses.
#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "names/AddressInfoList.h"
#include "names/LocalAddresses.h"
#include "names/NumericHosts.h"
#include "names/ResolverErrors.h"
#include "names/ServicePorts.h"
#include "names/SystemAddresses.h"
#include "sockets/StartUp.h"
#include "system/HostName.h"

#include <netdb.h>

#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace Posix;

// The query in the system's terms. All addresses get the same port.
struct Question {
    const char* host;
    std::uint16_t port;
    addrinfo hints;
};

// Asks for one socket type and any protocol: the system would refuse unusual pairs, and without a
// type would list each address once per type.
addrinfo SystemHints(const Winsock::AddressInfo& hints) noexcept {
    const bool datagrams =
        hints.type == Winsock::TypeDatagram || hints.protocol == Winsock::ProtocolUdp;
    addrinfo result = {};
    const AddressFamily* const family = FamilyFromWinsock(hints.family);
    result.ai_family = family != nullptr ? family->kernel : AF_UNSPEC;
    result.ai_socktype = datagrams ? SOCK_DGRAM : SOCK_STREAM;
    return result;
}

WinsockError HintsError(const Winsock::AddressInfo& hints) noexcept {
    if (hints.flags != 0) return WinsockError::Invalid;
    const bool family =
        hints.family == Winsock::FamilyUnspecified || FamilyFromWinsock(hints.family) != nullptr;
    if (!family) return WinsockError::AddressFamilyNotSupported;
    const bool type =
        hints.type == 0 || hints.type == Winsock::TypeStream || hints.type == Winsock::TypeDatagram;
    return type ? WinsockError::None : WinsockError::SocketTypeNotSupported;
}

// The system treats "*" as an omitted string; on Winsock it is an unknown name.
bool IsStar(const char* text) noexcept {
    return text != nullptr && std::strcmp(text, "*") == 0;
}

WinsockError TextsError(const char* host, const char* service) noexcept {
    if (host == nullptr && service == nullptr) return WinsockError::HostNotFound;
    if (IsStar(service)) return WinsockError::ServiceNotFound;
    return IsStar(host) ? WinsockError::HostNotFound : WinsockError::None;
}

void Append(const SystemList& found, std::uint16_t port, AddressInfoList& list) {
    for (const addrinfo* next = found.get(); next != nullptr; next = next->ai_next) {
        list.Append(WithPort(AddressOf(*next), port));
    }
}

// True for an empty list too.
bool IsLoopbackOnly(const SystemList& found) noexcept {
    const addrinfo* next = found.get();
    while (next != nullptr && IsLoopback(AddressOf(*next)))
        next = next->ai_next;
    return next == nullptr;
}

// Answers numeric hosts; returns false if the system has to be asked.
bool AnswerNumbers(const Question& question, AddressInfoList& list) {
    KernelAddress address = {};
    if (!ParseNumericHost(question.host, address)) return false;
    const int family = question.hints.ai_family;
    if (family != AF_UNSPEC && family != address.any.sa_family) return false;
    list.Append(WithPort(address, question.port));
    return true;
}

// Without a host the addresses are those of the loopback interface.
WinsockError AnswerLoopback(const Question& question, AddressInfoList& list) {
    SystemList found;
    const WinsockError error = FindSystemAddresses(nullptr, "0", question.hints, found);
    Append(found, question.port, list);
    return error;
}

// The local host's own name must resolve, even if no table and no server knows it or they know only
// loopback addresses, which others cannot reach.
WinsockError AnswerLocalHostName(const Question& question, WinsockError error,
                                 const SystemList& found, AddressInfoList& list) {
    if (IsError(error) && !MeansUnknown(error, question.host)) return error;
    std::vector<KernelAddress> own;
    if (const auto failure = FindLocalAddresses(question.hints.ai_family, own); IsError(failure))
        return failure;
    if (!IsError(error) && IsLoopbackOnly(own)) {
        Append(found, question.port, list);
        return WinsockError::None;
    }
    for (const KernelAddress& address : own)
        list.Append(WithPort(address, question.port));
    return list.IsEmpty() ? WinsockError::HostNotFound : WinsockError::None;
}

// Tries numbers first, then the system's tables and servers.
WinsockError AnswerName(const Question& question, AddressInfoList& list) {
    if (AnswerNumbers(question, list)) return WinsockError::None;
    SystemList found;
    const WinsockError error = FindSystemAddresses(question.host, nullptr, question.hints, found);
    if (IsLoopbackOnly(found) && IsLocalHostName(question.host)) {
        return AnswerLocalHostName(question, error, found, list);
    }
    if (MeansUntold(error) && IsLocalhost(question.host)) return AnswerLoopback(question, list);
    Append(found, question.port, list);
    return error;
}

WinsockError AnswerOwnName(Question question, AddressInfoList& list) {
    HostNameText own;
    if (const auto error = HostName(own); IsError(error)) return error;
    question.host = own.text;
    return AnswerName(question, list);
}

// "[literal]" or "[literal]:port"; the port is ignored.
bool ParseBrackets(const std::string& text, std::string& literal) {
    const std::size_t end = text.find(']');
    if (end == std::string::npos) return false;
    literal = text.substr(1, end - 1);
    const std::string rest = text.substr(end + 1);
    std::uint16_t port = 0;
    const bool hasPort = rest.starts_with(':') && ParseNumericPort(rest.c_str() + 1, port);
    return literal.find(':') != std::string::npos && (rest.empty() || hasPort);
}

WinsockError AnswerLiteral(Question question, AddressInfoList& list) {
    std::string literal;
    if (!ParseBrackets(question.host, literal)) return WinsockError::HostNotFound;
    question.host = literal.c_str();
    question.hints.ai_flags = AI_NUMERICHOST;
    return AnswerName(question, list);
}

WinsockError Answer(const char* host, const char* service, const Winsock::AddressInfo& hints,
                    AddressInfoList& list) {
    if (const auto error = TextsError(host, service); IsError(error)) return error;
    if (const auto error = HintsError(hints); IsError(error)) return error;
    Question question = {.host = host, .port = 0, .hints = SystemHints(hints)};
    if (const auto error = FindPort(service, question.hints, question.port); IsError(error))
        return error;
    if (host == nullptr) return AnswerLoopback(question, list);
    if (*host == '\0') return AnswerOwnName(question, list);
    return *host == '[' ? AnswerLiteral(question, list) : AnswerName(question, list);
}

// Winsock's calls do not throw.
WinsockError AnswerOrFail(const char* host, const char* service, const Winsock::AddressInfo& hints,
                          AddressInfoList& list) try {
    return IsStarted() ? Answer(host, service, hints, list) : WinsockError::NotStarted;
} catch (const std::bad_alloc&) {
    return WinsockError::NotEnoughMemory;
}

}  // namespace

int Winsock::getaddrinfo(const char* host, const char* service, const AddressInfo* hints,
                         AddressInfo** result) {
    if (result == nullptr) return ReturnError(WinsockError::Fault);
    const AddressInfo given = hints != nullptr ? *hints : AddressInfo{};
    AddressInfoList list(given);
    const WinsockError error = AnswerOrFail(host, service, given, list);
    *result = IsError(error) ? nullptr : list.Take();
    return ReturnError(error);
}

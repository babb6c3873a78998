// Numeric hosts and ports, against the C library. The input is a line with the host, and the port.
#include <Platform/Winsock.h>
#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "fuzz/Fuzzing.h"
#include "names/NumericHosts.h"

namespace {

using Fuzz::Expect;

// Family, address, scope and port of an address, so that they can be compared and shown.
struct Numbers {
    bool isIpv6 = false;
    std::string address;
    unsigned int scope = 0;
    int port = 0;

    bool operator==(const Numbers&) const = default;
};

void PrintTo(const Numbers& numbers, std::ostream* stream) {
    *stream << (numbers.isIpv6 ? "IPv6 " : "IPv4 ") << testing::PrintToString(numbers.address)
            << '%' << numbers.scope << ' ' << numbers.port;
}

Numbers NumbersOf(const sockaddr_in& address) {
    return {.isIpv6 = false,
            .address = {reinterpret_cast<const char*>(&address.sin_addr), 4},
            .scope = 0,
            .port = ntohs(address.sin_port)};
}

Numbers NumbersOf(const sockaddr_in6& address) {
    return {.isIpv6 = true,
            .address = {reinterpret_cast<const char*>(&address.sin6_addr), 16},
            .scope = address.sin6_scope_id,
            .port = ntohs(address.sin6_port)};
}

template <class Address>
Numbers NumbersAt(const void* bytes) {
    Address address = {};
    std::memcpy(&address, bytes, sizeof address);
    return NumbersOf(address);
}

// The C library's answer; none if it knows no such numbers.
std::optional<Numbers> SystemsAnswer(const char* host, const char* port) {
    // Which it takes for no host, unlike Winsock.
    if (std::string_view(host) == "*") return {};
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host, port, &hints, &found) != 0) return {};
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> list(found, &::freeaddrinfo);
    return list->ai_family == AF_INET6 ? NumbersAt<sockaddr_in6>(list->ai_addr)
                                       : NumbersAt<sockaddr_in>(list->ai_addr);
}

struct Answer {
    int error = 0;
    std::optional<Numbers> numbers;
};

// The library's answer. An address is the first and only one of its list.
Answer LibrarysAnswer(const char* host, const char* port) {
    const Winsock::AddressInfo hints = {.flags = 0,
                                        .family = 0,
                                        .type = Winsock::TypeStream,
                                        .protocol = 0,
                                        .addressLength = 0,
                                        .canonicalName = nullptr,
                                        .address = nullptr,
                                        .next = nullptr};
    Winsock::AddressInfo* found = nullptr;
    const int error = Winsock::getaddrinfo(host, port, &hints, &found);
    if (error != 0) return {.error = error, .numbers = {}};
    const std::unique_ptr<Winsock::AddressInfo, decltype(&Winsock::freeaddrinfo)> list(
        found, &Winsock::freeaddrinfo);
    return {.error = 0,
            .numbers = list->family == Winsock::FamilyIpv6 ? NumbersAt<sockaddr_in6>(list->address)
                                                           : NumbersAt<sockaddr_in>(list->address)};
}

// The address as the library and as the C library write it.
std::string LibrarysText(const Numbers& numbers) {
    Winsock::AddressStorage storage = {};
    sockaddr_in6 address = {};
    if (numbers.isIpv6) {
        std::memcpy(&address.sin6_addr, numbers.address.data(), 16);
        address.sin6_scope_id = numbers.scope;
        std::memcpy(&storage, &address, sizeof address);
        storage.family = Winsock::FamilyIpv6;
    } else {
        storage.family = Winsock::FamilyIpv4;
        std::memcpy(storage.bytes + 2, numbers.address.data(), 4);
    }
    char host[100] = "";
    char port[10] = "";
    const int flags = Winsock::NumericHost | Winsock::NumericService;
    Expect("getnameinfo", 0,
           Winsock::getnameinfo(&storage, sizeof storage, host, sizeof host, port, sizeof port,
                                flags));
    Expect<std::string>("no port", "0", port);
    return host;
}

std::string SystemsText(const Numbers& numbers) {
    char text[100] = "";
    ::inet_ntop(numbers.isIpv6 ? AF_INET6 : AF_INET, numbers.address.data(), text, sizeof text);
    return numbers.scope == 0 ? text : text + ("%" + std::to_string(numbers.scope));
}

// What is no numeric host would be asked for by name, so only the parser is asked whether it is.
void CompareHost(const std::string& text) {
    const std::optional<Numbers> expected = SystemsAnswer(text.c_str(), "0");
    Posix::KernelAddress parsed = {};
    if (Posix::ParseNumericHost(text.c_str(), parsed)) {
        const Numbers numbers =
            parsed.any.sa_family == AF_INET6 ? NumbersOf(parsed.ipv6) : NumbersOf(parsed.ipv4);
        Expect("the parsed host", expected, std::optional(numbers));
        // The C library's own forms are those that it writes, and IPv6's others without a scope.
    } else if (expected && !expected->isIpv6) {
        Expect("whether the usual form is refused", false, SystemsText(*expected) == text);
    } else if (expected) {
        Expect("whether a host without a scope is refused", true,
               text.find('%') != std::string::npos);
    }
    if (!expected) return;
    Expect("the host", expected, LibrarysAnswer(text.c_str(), nullptr).numbers);
    Expect("its text", SystemsText(*expected), LibrarysText(*expected));
}

void CompareBrackets(const std::string& text) {
    if (text.find(']') != std::string::npos) return;
    std::optional<Numbers> expected;
    if (text.find(':') != std::string::npos) expected = SystemsAnswer(text.c_str(), "0");
    for (const char* const tail : {"]", "]:80"}) {
        const Answer answer = LibrarysAnswer(("[" + text + tail).c_str(), nullptr);
        Expect("a host in brackets", expected, answer.numbers);
        Expect("its error", expected ? 0 : 11001, answer.error);
    }
}

// The C library takes a sign and blanks before a number, which makes negative ones names.
void ComparePort(const std::string& text) {
    const bool isNumber =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber || text.size() > 9) return;
    const Answer answer = LibrarysAnswer("127.0.0.1", text.c_str());
    Expect("the port", SystemsAnswer("127.0.0.1", text.c_str()), answer.numbers);
    Expect("its number", std::stoi(text) % 65536, answer.numbers ? answer.numbers->port : -1);
    std::uint16_t port = 0;
    Expect("whether the parser takes it", text.size() <= 5,
           Posix::ParseNumericPort(text.c_str(), port));
}

void ComparePortParser(const std::string& text) {
    std::uint16_t port = 0;
    if (Posix::ParseNumericPort(text.c_str(), port))
        Expect("whether a parsed port is digits", std::string::npos,
               text.find_first_not_of("0123456789"));
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static Winsock::StartupData startup = {};
    static const int started = Winsock::WSAStartup(0x0202, &startup);
    Expect("WSAStartup", 0, started);
    Fuzz::Input input(data, size);
    const std::string host = Fuzz::CText(input.Line());
    if (host == "*") Expect("the error of a star", 11001, LibrarysAnswer("*", nullptr).error);
    const std::string port = Fuzz::CText(input.Rest());
    CompareHost(host);
    CompareBrackets(host);
    ComparePort(port);
    ComparePortParser(port);
    return 0;
}

// Numbers are read and written without the system's resolver; these tests hold them against what
// the resolver makes of the same texts and addresses.
#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <thread>

#include "NameFiles.h"
#include "conformance/NameScene.h"

namespace Conformance {
namespace {

class TextMaker {
public:
    explicit TextMaker(unsigned int seed) : generator_(seed) {}

    unsigned int Any(unsigned int count) {
        return std::uniform_int_distribution<unsigned int>(0, count - 1)(generator_);
    }
    unsigned char AnyOctet() {
        static const unsigned char usual[] = {0, 0, 0, 1, 9, 10, 99, 100, 127, 199, 200, 255};
        return Any(2) == 0 ? usual[Any(std::size(usual))] : static_cast<unsigned char>(Any(256));
    }

    std::string Host() {
        switch (Any(6)) {
            case 0:
                return Ipv4();
            case 1:
                return Ipv6();
            case 2:
                return Changed(Any(2) == 0 ? Ipv4() : Ipv6());
            case 3:
                return Parts();
            case 4:
                return From("0123456789abcdefABCDEF:.%x", 45);
            default:
                return Noise();
        }
    }
    std::string Service() {
        switch (Any(4)) {
            case 0:
                return std::to_string(Any(70'000));
            case 1:
                return From("0123456789", 12);
            case 2:
                return From("0123456789 +-x", 5);
            default:
                return Any(2) == 0 ? "http" : Noise();
        }
    }

private:
    std::string Ipv4() {
        std::string text;
        for (int part = 0; part < 4; ++part)
            text.append(part > 0 ? "." : "").append(std::to_string(AnyOctet()));
        return text;
    }
    std::string Ipv6() {
        in6_addr address = {};
        for (unsigned char& octet : address.s6_addr)
            octet = Any(3) == 0 ? AnyOctet() : 0;
        char text[INET6_ADDRSTRLEN];
        return ::inet_ntop(AF_INET6, &address, text, sizeof text);
    }
    std::string Changed(std::string text) {
        const char character = "0123456789abcdefABCDEF:.%xg /-"[Any(30)];
        const std::size_t place = Any(static_cast<unsigned int>(text.size()));
        if (Any(2) == 0) text.insert(place, 1, character);
        if (Any(2) == 0) text[place] = character;
        if (Any(3) == 0) text.erase(place, 1);
        return text;
    }
    std::string Parts() {
        static const char* const parts[] = {"0",    "1",   "255", "256", "01",    "010",     "00",
                                            "0x7f", "007", "999", "",    "65535", "65536",   "+1",
                                            "-1",   " 1",  "1 ",  "08",  "0x",    "16777216"};
        std::string text = parts[Any(std::size(parts))];
        for (unsigned int count = Any(5); count > 0; --count)
            text.append(".").append(parts[Any(std::size(parts))]);
        return text;
    }
    std::string From(const std::string& characters, unsigned int longest) {
        std::string text(Any(longest) + 1, ' ');
        for (char& character : text)
            character = characters[Any(static_cast<unsigned int>(characters.size()))];
        return text;
    }
    std::string Noise() {
        std::string text(Any(20) + 1, ' ');
        for (char& character : text)
            character = static_cast<char>(Any(255) + 1);
        return text;
    }

    std::mt19937 generator_;
};

int ErrorOf(int systemError) {
    switch (systemError) {
        case 0:
            return 0;
        case EAI_SERVICE:
            return 10109;
        case EAI_NONAME:
        case EAI_ADDRFAMILY:
            return 11001;
        case EAI_NODATA:
            return 11004;
        case EAI_OVERFLOW:
            return 122;
        default:
            return -1;
    }
}

Winsock::AddressStorage WinsocksForm(const sockaddr* address) {
    Winsock::AddressStorage storage = {};
    const bool ipv6 = address->sa_family == AF_INET6;
    std::memcpy(&storage, address, ipv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in));
    storage.family = ipv6 ? Winsock::FamilyIpv6 : Winsock::FamilyIpv4;
    return storage;
}

// The system's answer, as the seam would have to tell it.
std::pair<int, Texts> SystemsAnswer(const char* host, const char* service, int family, int type) {
    addrinfo hints = {};
    hints.ai_family = family == 23 ? AF_INET6 : family == 2 ? AF_INET : AF_UNSPEC;
    hints.ai_socktype = type;
    addrinfo* list = nullptr;
    const int error = ::getaddrinfo(host, service, &hints, &list);
    Texts addresses;
    for (const addrinfo* next = list; error == 0 && next != nullptr; next = next->ai_next) {
        const Winsock::AddressStorage address = WinsocksForm(next->ai_addr);
        addresses.push_back(TextOf(&address));
    }
    if (error == 0) ::freeaddrinfo(list);
    return {ErrorOf(error), addresses};
}

std::pair<int, Texts> Answer(const char* host, const char* service, int family, int type) {
    const Winsock::AddressInfo hints = Hints(family, type);
    List list;
    const int error = Resolve(host, service, list, &hints);
    return {error, AddressesOf(list)};
}

// What Winsock takes otherwise than the system.
bool HasAMeaningOfItsOwn(const std::string& host, const std::string& service) {
    return host.empty() || host[0] == '[' || host == "*" || service == "*";
}

TEST(NumericNames, ResolveAsTheSystemsResolverDoes) {
    WithNames("", [] {
        TextMaker maker(20'240'301);
        int found = 0;
        for (int round = 0; round < 60'000; ++round) {
            const std::string host = maker.Host();
            const std::string service = maker.Service();
            if (HasAMeaningOfItsOwn(host, service)) continue;
            const char* const asked = maker.Any(8) == 0 ? nullptr : service.c_str();
            const int family = maker.Any(2) == 0 ? 0 : maker.Any(2) == 0 ? 2 : 23;
            const int type = maker.Any(2) == 0 ? 1 : 2;
            const auto answer = Answer(host.c_str(), asked, family, type);
            ASSERT_EQ(answer, SystemsAnswer(host.c_str(), asked, family, type))
                << '"' << host << "\" \"" << service << "\" " << family << ' ' << type;
            found += answer.first == 0 ? 1 : 0;
        }
        EXPECT_GT(found, 10'000);
    });
}

union AnyAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

// Scopes are numbers that no interface has: the system tells known ones by name.
AnyAddress MakeAddress(TextMaker& maker) {
    AnyAddress address = {};
    if (maker.Any(3) == 0) {
        address.ipv4.sin_family = AF_INET;
        address.ipv4.sin_addr.s_addr = maker.Any(~0U);
        address.ipv4.sin_port = static_cast<in_port_t>(maker.Any(65536));
        return address;
    }
    address.ipv6.sin6_family = AF_INET6;
    address.ipv6.sin6_port = static_cast<in_port_t>(maker.Any(65536));
    for (unsigned char& octet : address.ipv6.sin6_addr.s6_addr)
        octet = maker.Any(3) > 0 ? maker.AnyOctet() : 0;
    if (maker.Any(3) == 0) address.ipv6.sin6_addr.s6_addr[0] = 0xFE;
    if (maker.Any(3) == 0) address.ipv6.sin6_addr.s6_addr[1] = 0x80;
    if (maker.Any(2) == 0) address.ipv6.sin6_scope_id = 1000 + maker.Any(~0U - 1000);
    return address;
}

struct Rooms {
    unsigned int host;
    unsigned int service;
};

// The error, and without one the texts.
Texts SystemsTexts(const AnyAddress& address, const Rooms& rooms) {
    char host[100] = {};
    char service[100] = {};
    const bool ipv6 = address.any.sa_family == AF_INET6;
    const socklen_t length = ipv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    const int error = ErrorOf(::getnameinfo(&address.any, length, host, rooms.host, service,
                                            rooms.service, NI_NUMERICHOST | NI_NUMERICSERV));
    if (error != 0) return {std::to_string(error)};
    return {host, service};
}

Texts TextsOf(const AnyAddress& address, const Rooms& rooms) {
    char host[100] = {};
    char service[100] = {};
    const Winsock::AddressStorage storage = WinsocksForm(&address.any);
    const int error =
        Winsock::getnameinfo(&storage, sizeof storage, host, rooms.host, service, rooms.service,
                             Winsock::NumericHost | Winsock::NumericService);
    if (error != 0) return {std::to_string(error)};
    return {host, service};
}

TEST(NumericNames, AreWrittenAsTheSystemsResolverWritesThem) {
    WithNames("", [] {
        TextMaker maker(20'240'302);
        for (int round = 0; round < 100'000; ++round) {
            const AnyAddress address = MakeAddress(maker);
            const Rooms rooms = {maker.Any(60) + 1, maker.Any(8) + 1};
            ASSERT_EQ(TextsOf(address, rooms), SystemsTexts(address, rooms));
        }
    });
}

class NumericNamesHeld : public Started {};

TEST_F(NumericNamesHeld, ListsAreIndependentOfEachOther) {
    List first = Resolved("127.0.0.1", "1");
    const List second = Resolved("127.0.0.2", "2");
    first = Resolved("127.0.0.3", "3");
    const List third = Resolved("127.0.0.4", "4");
    EXPECT_EQ(AddressesOf(first), Texts{"127.0.0.3 3"});
    EXPECT_EQ(AddressesOf(second), Texts{"127.0.0.2 2"});
    EXPECT_EQ(AddressesOf(third), Texts{"127.0.0.4 4"});
}

TEST_F(NumericNamesHeld, ListsOfSeveralThreadsAreIndependent) {
    std::vector<std::thread> threads;
    for (int number = 1; number <= 4; ++number) {
        threads.emplace_back([host = "127.0.0." + std::to_string(number)] {
            for (int round = 0; round < 1'000; ++round)
                EXPECT_EQ(AddressesOf(Resolved(host.c_str(), "80")), Texts{host + " 80"});
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace Conformance

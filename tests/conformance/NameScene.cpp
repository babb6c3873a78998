#include "NameScene.h"

#include <Platform/System.h>

#include <cstring>
#include <sstream>

#include "Answers.h"
#include "WineAnswers.h"

namespace Conformance {

namespace {

constexpr int NoCallsError = 4711;

std::string Ipv4Text(const Winsock::AddressIpv4& address) {
    std::ostringstream text;
    for (int index = 0; index < 4; ++index)
        text << (index > 0 ? "." : "") << int{address.address[index]};
    text << ' ' << address.port[0] * 256 + address.port[1];
    return text.str();
}

std::string Ipv6Text(const Winsock::AddressIpv6& address) {
    std::ostringstream text;
    text << std::hex;
    for (int index = 0; index < 16; index += 2)
        text << (index > 0 ? ":" : "") << address.address[index] * 256 + address.address[index + 1];
    text << std::dec << '%' << address.scope << ' ' << address.port[0] * 256 + address.port[1];
    return text.str();
}

void ExpectWinsocksForm(const Winsock::AddressInfo& entry) {
    unsigned short family = 0;
    std::memcpy(&family, entry.address, sizeof family);
    EXPECT_EQ(family, entry.family);
    EXPECT_EQ(entry.addressLength, family == Winsock::FamilyIpv6 ? 28U : 16U);
    EXPECT_EQ(entry.canonicalName, nullptr);
}

}  // namespace

testing::AssertionResult Returns(int expected, int result, std::string_view wineSituation) {
    const int error = Winsock::WSAGetLastError();
    System::RestoreErrorNumbers({.winsock = NoCallsError, .system = 0});
    NoteAnswer(expected, result);
    const bool told = error == expected || (expected == 0 && LeavesLastErrorAfterSuccess());
    if (result == expected && told) return testing::AssertionSuccess();
    if (IsWinesAnswer(wineSituation, result == 0 ? 0 : Winsock::SocketError, result))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "result " << result << ", last error " << error;
}

Winsock::AddressInfo Hints(int family, int type, int protocol) {
    Winsock::AddressInfo hints = {};
    hints.family = family;
    hints.type = type;
    hints.protocol = protocol;
    return hints;
}

int Resolve(const char* host, const char* service, List& list, const Winsock::AddressInfo* hints) {
    Winsock::AddressInfo unset = {};
    Winsock::AddressInfo* result = &unset;
    const int error = Winsock::getaddrinfo(host, service, hints, &result);
    EXPECT_NE(result, &unset);
    list.reset(result);
    return error;
}

List Resolved(const char* host, const char* service, const Winsock::AddressInfo* hints) {
    List list;
    EXPECT_TRUE(Returns(0, Resolve(host, service, list, hints))) << (host ? host : "null");
    EXPECT_NE(list, nullptr);
    return list;
}

std::string TextOf(const void* address) {
    unsigned short family = 0;
    std::memcpy(&family, address, sizeof family);
    Winsock::AddressIpv4 ipv4 = {};
    Winsock::AddressIpv6 ipv6 = {};
    if (family == Winsock::FamilyIpv4) {
        std::memcpy(&ipv4, address, sizeof ipv4);
        return Ipv4Text(ipv4);
    }
    if (family != Winsock::FamilyIpv6) return "family " + std::to_string(family);
    std::memcpy(&ipv6, address, sizeof ipv6);
    return Ipv6Text(ipv6);
}

Texts AddressesOf(const List& list) {
    Texts texts;
    for (const Winsock::AddressInfo* next = list.get(); next != nullptr; next = next->next) {
        ExpectWinsocksForm(*next);
        texts.push_back(TextOf(next->address));
    }
    return texts;
}

}  // namespace Conformance

// Names and addresses, as the system's resolver knows them.
#include <VelNet/SocketAddress.h>
#include <loopback/LoopbackTest.h>
#include <loopback/ThisProcess.h>

#include <vector>

namespace Loopback {
namespace {

using VelNet::SocketAddress;

class Resolution : public LoopbackTest {
protected:
    Resolution() { EnableOnly({Error}); }
};

std::vector<std::string> AddressesOf(const char* name) {
    const auto addresses = SocketAddress::GetOctetsFromMachineName(name);
    std::vector<std::string> texts;
    for (unsigned int index = 0; index < addresses->GetCount(); ++index) {
        texts.emplace_back(addresses->GetOctets(index).GetAddressString().c_str());
    }
    return texts;
}

Failure FailureOfLookUp(const std::string& name) {
    return FailureOf([&name] { SocketAddress::GetOctetsFromMachineName(name.c_str()); });
}

// Which number the system has for an unknown name depends on its resolver.
std::u16string NotResolvable(const std::u16string& name, int number) {
    return u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is "
           u"not resolvable on this machine. Connection = {" +
           name + u"}" + ErrorTail(number, Text(VelNet::Exception::GetErrorString(number)));
}

bool IsResolversNumber(int number) {
    return number >= 11001 && number <= 11004;
}

void ExpectNotResolvable(const std::string& name, const std::u16string& shown) {
    const Failure failure = FailureOfLookUp(name);
    EXPECT_TRUE(IsResolversNumber(failure.code)) << failure.code;
    EXPECT_EQ(failure.text, NotResolvable(shown, failure.code));
}

TEST_F(Resolution, LocalhostIsThisMachine) {
    EXPECT_EQ(AddressesOf("localhost").front(), "127.0.0.1");
}

TEST_F(Resolution, WhateverBeginsWithLocalhostIsLookedUpAsJustThat) {
    EXPECT_EQ(AddressesOf("localhost.localdomain"), AddressesOf("localhost"));
    EXPECT_EQ(AddressesOf("localhosts and no name at all"), AddressesOf("localhost"));
}

TEST_F(Resolution, ADottedTextIsItsOwnAddress) {
    EXPECT_EQ(AddressesOf("10.1.2.3"), std::vector<std::string>{"10.1.2.3"});
}

TEST_F(Resolution, AnEmptyNameIsThisMachine) {
    EXPECT_EQ(AddressesOf(""), AddressesOf(ThisProcess::HostName().c_str()));
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(Resolution, AnUnknownNameIsToldWithTheSystemsNumber) {
    const Failure failure = FailureOfLookUp("name.invalid");
    EXPECT_TRUE(IsResolversNumber(failure.code)) << failure.code;
    EXPECT_EQ(failure.text, NotResolvable(u"name.invalid", failure.code));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_F(Resolution, AVeryLongNameIsLoggedWholeAndThrownAsFarAsThereIsRoom) {
    const std::string name(5000, 'x');
    const Failure failure = FailureOfLookUp(name);
    EXPECT_TRUE(IsResolversNumber(failure.code)) << failure.code;
    const std::u16string whole = NotResolvable(Widen(name), failure.code);
    EXPECT_EQ(failure.text, whole.substr(0, 2999));
    EXPECT_EQ(Sink().Take(), (Records{{Error, whole}}));
}

// Names with a part of more than 63 letters, or with an empty part, can be none: the system rejects
// them without asking anybody.
const std::string TooLongPart(64, 'x');

TEST_F(Resolution, ANameThatIsNotUtf8IsShownWithReplacements) {
    const std::u16string part = Widen(TooLongPart);
    ExpectNotResolvable("caf\xE9." + TooLongPart, u"caf\uFFFD." + part);
    ExpectNotResolvable("\xFF\xFE" + TooLongPart, u"\uFFFD\uFFFD" + part);
    ExpectNotResolvable("\xC3\xA9" + TooLongPart + "\xC3", u"\u00E9" + part + u"\uFFFD");
}

TEST_F(Resolution, ANameWithAnEmptyPartIsNotResolvable) {
    ExpectNotResolvable("no..such", u"no..such");
}

TEST_F(Resolution, TheLocalMachinesNameIsTheSystems) {
    const std::string name = SocketAddress::GetLocalMachineName().c_str();
    EXPECT_NE(name, "");
    EXPECT_EQ(name, ThisProcess::HostName());
}

TEST_F(Resolution, AReverseLookUpGivesANameOrAnUnloggedFailure) {
    std::string name;
    const Failure failure =
        FailureOf([&name] { name = SocketAddress::GetMachineNameFromOctets(LocalHost()).c_str(); });
    EXPECT_EQ(Sink().Take(), Records{});
    EXPECT_EQ(name.empty(), failure.code != 0);
    if (failure.code == 0) return;
    EXPECT_TRUE(failure.code == 11001 || failure.code == 11004) << failure.code;
    EXPECT_EQ(failure.text,
              u"VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is "
              u"not resolvable on this machine. Connection = {127.0.0.1}" +
                  ErrorTail(failure.code, Text(VelNet::Exception::GetErrorString(failure.code))));
}

std::string Converted(const char* text) {
    return SocketAddress::ConvertDottedStringToOctets(text).GetAddressString().c_str();
}

TEST_F(Resolution, DottedTextsAreConvertedInAllFormsOfTheSystem) {
    EXPECT_EQ(Converted("10.1.2.3"), "10.1.2.3");
    EXPECT_EQ(Converted("0.0.0.0"), "0.0.0.0");
    EXPECT_EQ(Converted("255.255.255.254"), "255.255.255.254");
    EXPECT_EQ(Converted("127.1"), "127.0.0.1");
    EXPECT_EQ(Converted("0x7F.0.0.010"), "127.0.0.8");
    EXPECT_EQ(Converted("16909060"), "1.2.3.4");
    EXPECT_EQ(Sink().Take(), Records{});
}

Failure FailureOfConversion(const char* text) {
    return FailureOf([text] { SocketAddress::ConvertDottedStringToOctets(text); });
}

Failure NotDotted(const std::u16string& text) {
    return {
        u"VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is not "
        u"an Internet Protocol dotted address: " +
            text,
        -1};
}

TEST_F(Resolution, OtherTextsAreNotConverted) {
    EXPECT_EQ(FailureOfConversion(""), NotDotted(u""));
    EXPECT_EQ(FailureOfConversion("1.2.3.4.5"), NotDotted(u"1.2.3.4.5"));
    EXPECT_EQ(FailureOfConversion("256.1.1.1"), NotDotted(u"256.1.1.1"));
    EXPECT_EQ(FailureOfConversion("localhost"), NotDotted(u"localhost"));
    EXPECT_EQ(FailureOfConversion("\xC3("), NotDotted(u"\uFFFD("));
}

TEST_F(Resolution, TheBroadcastAddressIsNotConverted) {
    EXPECT_EQ(FailureOfConversion("255.255.255.255"), NotDotted(u"255.255.255.255"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, NotDotted(u"255.255.255.255").text}}));
}

TEST_F(Resolution, ATextCannotPretendToBeAnotherRecord) {
    EXPECT_EQ(FailureOfConversion("x\nConnected"), NotDotted(u"x\nConnected"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, NotDotted(u"x\\u000AConnected").text}}));
}

}  // namespace
}  // namespace Loopback

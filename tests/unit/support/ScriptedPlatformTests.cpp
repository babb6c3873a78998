#include "scripted/ScriptedPlatform.h"

#include <Platform/Registry.h>
#include <Platform/System.h>
#include <Platform/Winsock.h>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

using namespace Scripted;

class ScriptedPlatform : public PlatformTest {};

Winsock::AddressIpv4 PeerAddress() {
    Winsock::AddressIpv4 address{};
    std::memcpy(&address, SocketAddressBytes("10.0.0.1", 80).data(), sizeof address);
    return address;
}

TEST_F(ScriptedPlatform, RecordsCallsInTheirOrder) {
    Winsock::StartupData data{};
    const Winsock::AddressIpv4 peer = PeerAddress();
    const int timeout = 5000;
    Winsock::WSAStartup(0x0202, &data);
    const Winsock::Handle handle = Winsock::socket(2, 1, 6);
    Winsock::setsockopt(handle, 0xFFFF, 0x1006, reinterpret_cast<const char*>(&timeout), 4);
    Winsock::connect(handle, &peer, 16);
    Winsock::send(handle, "a\n\"b", 4, 0);
    Winsock::closesocket(handle);
    Winsock::closesocket(Winsock::InvalidSocket);
    Winsock::WSACleanup();
    EXPECT_EQ(
        Transcript(),
        (Lines{"WSAStartup(0x0202)", "socket(2, 1, 6)", "setsockopt(1001, 0xFFFF, 0x1006, 5000, 4)",
               "connect(1001, 10.0.0.1:80, 16)", "send(1001, \"a\\x0A\"b\", 4, 0)",
               "closesocket(1001)", "closesocket(INVALID)", "WSACleanup()"}));
    EXPECT_EQ(LastEventOf("send").bytes, "a\n\"b");
    EXPECT_EQ(LastEventOf("connect").pointer, &peer);
    EXPECT_EQ(data.version, 0x0202);
}

TEST_F(ScriptedPlatform, AnswersFromTheQueueThenAsUsual) {
    On::Send().Returns(2).Fails(10054).Passes().Throws(std::runtime_error("cut"));
    EXPECT_EQ(Winsock::send(7, "abcd", 4, 0), 2);
    EXPECT_EQ(Winsock::send(7, "abcd", 4, 0), -1);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10054);
    EXPECT_EQ(Winsock::send(7, "abcd", 4, 0), 4);
    EXPECT_THROW(Winsock::send(7, "abcd", 4, 0), std::runtime_error);
    EXPECT_EQ(Winsock::send(7, "abcd", 4, 0), 4);
}

TEST_F(ScriptedPlatform, AnswersCanBeForgotten) {
    On::Send().Returns(2).Returns(3);
    On::Listen().Fails(10048);
    EXPECT_EQ(UnusedAnswers(), (Lines{"listen", "send", "send"}));
    ForgetAnswers();
    EXPECT_EQ(UnusedAnswers(), Lines{});
    EXPECT_EQ(Winsock::send(7, "abcd", 4, 0), 4);
}

TEST_F(ScriptedPlatform, LaterSuccessDisturbsTheLastError) {
    On::Listen().Fails(10048);
    DisturbLastErrorWith(777);
    Winsock::listen(7, 5);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10048);
    System::Sleep(0);
    EXPECT_EQ(Winsock::WSAGetLastError(), 777);
}

TEST_F(ScriptedPlatform, ReceivesAndAcceptsWhatIsScripted) {
    On::Recv().Delivers("hello");
    On::Accept().Returns(8, "10.0.0.2", 1234);
    char buffer[8] = {};
    Winsock::AddressIpv4 peer{};
    int length = 16;
    EXPECT_EQ(Winsock::recv(7, buffer, 8, 0), 5);
    EXPECT_STREQ(buffer, "hello");
    EXPECT_EQ(Winsock::accept(7, &peer, &length), 8U);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&peer), sizeof peer),
              SocketAddressBytes("10.0.0.2", 1234));
    Winsock::closesocket(8);
    EXPECT_EQ(Transcript(), (Lines{"recv(7, 8, 0)", "accept(7, 16)", "closesocket(8)"}));
}

TEST_F(ScriptedPlatform, HostEntryIsSpoiltByTheNextNameCall) {
    On::Gethostbyname().Returns({"10.0.0.1", "10.0.0.2"}, "box").Fails(11001);
    const Winsock::HostEntry* const entry = Winsock::gethostbyname("box");
    ASSERT_NE(entry, nullptr);
    const char* const name = entry->name;
    EXPECT_STREQ(name, "box");
    EXPECT_EQ(std::string(entry->addresses[1], 4), AddressBytes("10.0.0.2"));
    EXPECT_EQ(entry->addresses[2], nullptr);
    EXPECT_EQ(CurrentHostEntry(), entry);
    EXPECT_EQ(Winsock::gethostbyname("none"), nullptr);
    EXPECT_EQ(Winsock::WSAGetLastError(), 11001);
    EXPECT_EQ(name[0], '\xDD');
}

TEST_F(ScriptedPlatform, DottedTextsAreReadStrictly) {
    unsigned int address = 0;
    std::memcpy(&address, AddressBytes("10.0.0.255").data(), sizeof address);
    EXPECT_EQ(Winsock::inet_addr("10.0.0.255"), address);
    for (const char* const text :
         {"", "10.0.0", "10.0.0.256", "10.0.0.1 ", "10.0.0.1.2", "a.b.c.d"})
        EXPECT_EQ(Winsock::inet_addr(text), Winsock::NoAddress) << text;
}

TEST_F(ScriptedPlatform, ObserverLooksInsideAndMayThrow) {
    Lines seen;
    Observe("listen", [&](const Event& event) {
        seen.push_back(event.text);
        throw 5;
    });
    EXPECT_THROW(Winsock::listen(7, 5), int);
    EXPECT_EQ(seen, Lines{"listen(7, 5)"});
}

TEST_F(ScriptedPlatform, RegistryIsReadFromTheTree) {
    RegistryTree().Value("SYSTEM\\Tcpip", "Domain", u"example.org").Key("SYSTEM\\Tcpip\\Cards");
    On::ReadValue().Passes().Fails(5);
    unsigned int error = 99;
    Registry::Key* const key = Registry::OpenKey(3, Wide("system\\TCPIP").data(), error);
    ASSERT_NE(key, nullptr);
    System::WideUnits text;
    EXPECT_TRUE(Registry::ReadValue(*key, Wide("DOMAIN").data(), &text, error));
    EXPECT_EQ(std::u16string(text.begin(), text.end()), u"example.org");
    EXPECT_FALSE(Registry::ReadValue(*key, Wide("Domain").data(), nullptr, error));
    EXPECT_EQ(error, 5U);
    const std::vector<System::WideUnits> names = Registry::SubKeyNames(*key, error);
    EXPECT_EQ(names, (std::vector<System::WideUnits>{{'C', 'a', 'r', 'd', 's'}}));
    EXPECT_EQ(error, 0U);
    EXPECT_EQ(Registry::OpenSubKey(*key, Wide("Other").data(), error), nullptr);
    EXPECT_EQ(Ledger(), Lines{"registry key 1"});
    Registry::CloseKey(key);
    EXPECT_EQ(Transcript(), (Lines{"OpenKey(3, \"system\\TCPIP\")", "ReadValue(1, \"DOMAIN\")",
                                   "ReadValue(1, \"Domain\", null)", "SubKeyNames(1)",
                                   "OpenSubKey(1, \"Other\")", "CloseKey(1)"}));
}

TEST_F(ScriptedPlatform, LogFilesLiveInMemory) {
    unsigned int error = 99;
    On::OpenLogFile().Passes().Fails(13);
    const System::LogFile file = System::OpenLogFile("a.log", error);
    EXPECT_EQ(error, 0U);
    EXPECT_EQ(System::WriteLogFile(file, "one\n", 4), 4U);
    EXPECT_FALSE(System::EndsWithinLine(file));
    EXPECT_EQ(System::OpenLogFile("b.log", error), System::NoLogFile);
    EXPECT_EQ(error, 13U);
    System::CloseLogFile(file);
    EXPECT_EQ(System::WriteLogFile(file, "two\n", 4), 0U);
    EXPECT_EQ(LogFileContents("a.log"), "one\n");
}

TEST_F(ScriptedPlatform, CodePageIsLatin1) {
    EXPECT_EQ(System::WideFromCodePage("\xE9", 1), System::WideUnits{0xE9});
    EXPECT_EQ(System::CodePageFromWide(Wide(u"\u00E9\u20AC").data(), 2), "\xE9?");
    EXPECT_EQ(Transcript(),
              (Lines{"WideFromCodePage(\"\\xE9\", 1)", "CodePageFromWide(\"\\u00E9\\u20AC\", 2)"}));
}

TEST_F(ScriptedPlatform, LedgerListsWhatIsOpen) {
    Winsock::StartupData data{};
    Winsock::WSAStartup(0x0202, &data);
    On::WSAStartup().Returns(10091);
    Winsock::WSAStartup(0x0202, &data);
    Winsock::socket(2, 1, 6);
    Winsock::WSACleanup();
    Winsock::WSACleanup();
    EXPECT_EQ(Ledger(), (Lines{"socket 1001", "surplus start-up"}));
    ForgetInLedger("surplus start-up");
    On::Closesocket().Fails(10035);
    EXPECT_EQ(Winsock::closesocket(1001), -1);
    EXPECT_EQ(Winsock::closesocket(1001), -1);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10038);
}

// Direct calls of operator new, which no compiler may leave out.
TEST_F(ScriptedPlatform, AllocationsAreCountedAndFailed) {
    const Allocations::Mark mark;
    void* const first = operator new(100);
    EXPECT_EQ(mark.LiveBytes(), 100);
    {
        const Allocations::FailNth failure(2);
        operator delete(operator new(10));
        EXPECT_FALSE(failure.Happened());
        EXPECT_THROW(operator delete[](operator new[](20)), std::bad_alloc);
        EXPECT_TRUE(failure.Happened());
    }
    System::Sleep(0);
    operator delete(first);
    EXPECT_EQ(mark.LiveBlocks(), 0);
    const std::vector<std::size_t> sizes = mark.Sizes();
    EXPECT_EQ(sizes, (std::vector<std::size_t>{100, 10, 20}));
}

TEST_F(ScriptedPlatform, OverAlignedAndSilentRequestsAreCountedToo) {
    const Allocations::Mark mark;
    void* const block = operator new(70, std::align_val_t(64));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U);
    EXPECT_EQ(mark.LiveBytes(), 70);
    operator delete(block, std::align_val_t(64));
    EXPECT_EQ(mark.LiveBytes(), 0);
    const Allocations::FailNth failure(1);
    EXPECT_EQ(operator new(5, std::nothrow), nullptr);
}

TEST_F(ScriptedPlatform, EachThreadHasItsLastErrorAndHostEntry) {
    const Winsock::HostEntry* const entry = Winsock::gethostbyname("box");
    SetLastError(10022);
    std::thread other([&] {
        EXPECT_EQ(LastError(), 0);
        EXPECT_EQ(CurrentHostEntry(), nullptr);
        EXPECT_NE(Winsock::gethostbyname("box"), entry);
    });
    other.join();
    EXPECT_EQ(LastError(), 10022);
    EXPECT_EQ(CurrentHostEntry(), entry);
    EXPECT_NE(Events()[0].thread, Events()[1].thread);
}

class Enclosed : public PlatformTest {
public:
    void End() { TearDown(); }

private:
    void TestBody() override {}
};

// What the fixture says at the end of a test with this body.
std::string FailureAtTheEndOf(const std::function<void()>& body) {
    Enclosed test;
    ::testing::TestPartResultArray results;
    const ::testing::ScopedFakeTestPartResultReporter reporter(
        ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    Reset();
    body();
    test.End();
    return results.size() == 0 ? "" : results.GetTestPartResult(results.size() - 1).message();
}

TEST_F(ScriptedPlatform, EndOfATestFindsWhatWasLeft) {
    EXPECT_EQ(FailureAtTheEndOf([] { Winsock::closesocket(Winsock::socket(2, 1, 6)); }), "");
    EXPECT_THAT(FailureAtTheEndOf([] { On::Recv().Returns(0).Fails(1); }),
                ::testing::HasSubstr("answers left: { \"recv\", \"recv\" }"));
    EXPECT_THAT(FailureAtTheEndOf([] { Winsock::socket(2, 1, 6); }),
                ::testing::HasSubstr("still open: { \"socket 1001\" }"));
    std::unique_ptr<int> kept;
    EXPECT_THAT(FailureAtTheEndOf([&] { kept = std::make_unique<int>(1); }),
                ::testing::HasSubstr("memory not freed, in bytes: 4"));
}

TEST_F(ScriptedPlatform, ReceivingWithoutAnAnswerFailsTheTest) {
    char buffer[1];
    EXPECT_NONFATAL_FAILURE(Winsock::recv(7, buffer, 1, 0), "recv has no answer left");
}

TEST_F(ScriptedPlatform, ErrorNumbersAreDistinct) {
    std::vector<int> numbers = ErrorNumbers();
    std::sort(numbers.begin(), numbers.end());
    EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end());
    EXPECT_EQ(numbers.size(), 67U);
}

}  // namespace

#include "ModuleTest.h"

#include <VelLog/LogControl.h>

#include <algorithm>

#include "scripted/platform/Call.h"
#include "support/windows/StandIns.h"
#include "unit/socket/ErrorTableExpectations.h"

namespace ModuleTests {

namespace {

std::vector<Module::StandIn> AllStandIns() {
    std::vector<Module::StandIn> all = Module::SocketStandIns();
    for (const auto& more :
         {Module::SystemStandIns(), Module::MemoryStandIns(), Module::RegistryStandIns()})
        all.insert(all.end(), more.begin(), more.end());
    return all;
}

// A record shows the control characters that some numbers are.
std::u16string AsRecorded(const std::u16string& text) {
    std::u16string shown;
    for (const char16_t unit : text) {
        const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
        shown += isControl ? u"\\u" + Widen(HexNumber(unit, 4)) : std::u16string(1, unit);
    }
    return shown;
}

Socket::SOCKET_PROTOCOL ProtocolOf(Socket::SOCKET_TYPE type) {
    return type == Socket::SOCKET_STREAM ? Socket::PROTOCOL_TCP : Socket::PROTOCOL_UDP;
}

// The log keeps the thread's error numbers, and asks for them.
Lines CallsWithoutLog(const Lines& calls) {
    Lines others = calls;
    std::erase(others, "WSAGetLastError()");
    return others;
}

}  // namespace

const Failure& NoFailure() {
    static const Failure none = FailureOf([] {});
    return none;
}

Failure FailureWith(std::string_view head, int error) {
    return {FoundationTests::ExpectedFailureText(head, error),
            FoundationTests::ExpectedRow(error).code};
}

std::string XtHead(const std::string& operation, const std::string& description,
                   const std::string& call, const std::string& addresses) {
    return "VelNet::SocketXtImpl::" + operation + " , " + description + " , " + call + " , " +
           addresses + ' ';
}

std::vector<int> ErrorNumbersWithout(std::initializer_list<int> excluded) {
    std::vector<int> numbers = ErrorNumbers();
    std::erase_if(numbers, [&](int number) {
        return std::find(excluded.begin(), excluded.end(), number) != excluded.end();
    });
    return numbers;
}

Octets OctetsOf(const std::string& dotted) {
    const std::string bytes = AddressBytes(dotted);
    const auto octet = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    return {octet(0), octet(1), octet(2), octet(3)};
}

std::string TextOf(const SocketAddress& endpoint) {
    return std::string(endpoint.GetOctets().GetAddressString().c_str()) + ':' +
           std::to_string(endpoint.GetPort());
}

void ModuleTest::SetUp() {
    PlatformTest::SetUp();
    imports_.emplace(AllStandIns());
    Loopback::EnableOnly({});
    VelLog::SetSink(&sink_);
    DisturbLastErrorWith(Disturbance);
}

void ModuleTest::TearDown() {
    VelLog::SetSink(nullptr);
    Loopback::EnableOnly({});
    imports_.reset();
    PlatformTest::TearDown();
}

void ModuleTest::ExpectEachFailure(const Failing& failing, const std::vector<int>& numbers) {
    for (const bool isErrorOn : {false, true}) {
        Loopback::EnableOnly({});
        VelLog::SetRouterEnabled("Network", Loopback::Error, isErrorOn);
        for (const int number : numbers)
            ExpectFailure(failing, number, isErrorOn);
    }
    Loopback::EnableOnly({});
}

void ModuleTest::ExpectFailure(const Failing& failing, int number, bool isErrorOn) {
    SCOPED_TRACE(number);
    const Failure expected = FailureWith(failing.head, number);
    failing.failWith(number);
    ClearTranscript();
    TakeRecords();
    EXPECT_EQ(FailureOf(failing.operation), failing.isThrown ? expected : NoFailure());
    if (isErrorOn)
        EXPECT_EQ(CallsWithoutLog(Transcript()), CallsWithoutLog(failing.calls));
    else
        EXPECT_EQ(Transcript(), failing.calls);
    const bool isRecorded = isErrorOn && failing.isLogged;
    EXPECT_EQ(TakeRecords(),
              isRecorded ? (Records{{Loopback::Error, AsRecorded(expected.text)}}) : Records());
}

void LayerTest::SetUp() {
    ModuleTest::SetUp();
    layer_.emplace();
    ClearTranscript();
}

void LayerTest::TearDown() {
    layer_.reset();
    ModuleTest::TearDown();
}

SocketPtr LayerTest::NewSocket(Socket::SOCKET_TYPE type) {
    SocketPtr socket = CreateSocket(type, ProtocolOf(type));
    ClearTranscript();
    return socket;
}

SocketXtPtr LayerTest::NewSocketXt(Socket::SOCKET_TYPE type) {
    SocketXtPtr socket = CreateSocketXt(type, ProtocolOf(type));
    ClearTranscript();
    return socket;
}

}  // namespace ModuleTests

// What every call answers to a handle that is no open socket.
#include <string_view>
#include <vector>

#include "Provocation.h"
#include "Scene.h"

namespace Conformance {
namespace {

struct Call {
    const char* name;
    // Whether the call failed.
    std::function<bool(Winsock::Handle)> failed;
};

// With the handle alone in one of the sets.
int Select(Winsock::Handle handle, std::size_t set) {
    constexpr Winsock::TimeValue atOnce = {0, 0};
    Winsock::HandleSet handles = {1, {handle}};
    Winsock::HandleSet* sets[3] = {};
    sets[set] = &handles;
    return Winsock::select(0, sets[0], sets[1], sets[2], &atOnce);
}

const std::vector<Call>& EveryCall() {
    static Winsock::AddressIpv4 address = Loopback(9);
    static int length = 0;
    static char buffer[16] = {};
    static unsigned int argument = 1;
    static const std::vector<Call> calls = {
        {"bind", [](auto h) { return Winsock::bind(h, &address, sizeof address) == -1; }},
        {"listen", [](auto h) { return Winsock::listen(h, 5) == -1; }},
        {"connect", [](auto h) { return Winsock::connect(h, &address, sizeof address) == -1; }},
        {"accept", [](auto h) { return Winsock::accept(h, nullptr, nullptr) == ~0ULL; }},
        {"getsockname",
         [](auto h) {
             length = sizeof address;
             return Winsock::getsockname(h, &address, &length) == -1;
         }},
        {"getpeername",
         [](auto h) {
             length = sizeof address;
             return Winsock::getpeername(h, &address, &length) == -1;
         }},
        {"send", [](auto h) { return Winsock::send(h, "abc", 3, 0) == -1; }},
        {"recv", [](auto h) { return Winsock::recv(h, buffer, sizeof buffer, 0) == -1; }},
        {"sendto",
         [](auto h) { return Winsock::sendto(h, "abc", 3, 0, &address, sizeof address) == -1; }},
        {"sendto, without address",
         [](auto h) { return Winsock::sendto(h, "abc", 3, 0, nullptr, 0) == -1; }},
        {"recvfrom",
         [](auto h) {
             length = sizeof address;
             return Winsock::recvfrom(h, buffer, sizeof buffer, 0, &address, &length) == -1;
         }},
        {"select, to read", [](auto h) { return Select(h, 0) == -1; }},
        {"select, to write", [](auto h) { return Select(h, 1) == -1; }},
        {"select, for exceptions", [](auto h) { return Select(h, 2) == -1; }},
        {"setsockopt",
         [](auto h) { return Winsock::setsockopt(h, 0xFFFF, 0x1006, buffer, 4) == -1; }},
        {"setsockopt, broadcast",
         [](auto h) { return Winsock::setsockopt(h, 0xFFFF, 0x20, buffer, 4) == -1; }},
        {"setsockopt, membership",
         [](auto h) { return Winsock::setsockopt(h, 0, 12, buffer, 8) == -1; }},
        {"ioctlsocket, mode",
         [](auto h) { return Winsock::ioctlsocket(h, 0x8004667EU, &argument) == -1; }},
        {"ioctlsocket, count",
         [](auto h) { return Winsock::ioctlsocket(h, 0x4004667FU, &argument) == -1; }},
        {"closesocket", [](auto h) { return Winsock::closesocket(h) == -1; }},
    };
    return calls;
}

void ExpectNoSocket(Winsock::Handle handle, std::string_view wineSituation = {}) {
    for (const Call& call : EveryCall()) {
        EXPECT_TRUE(call.failed(handle)) << call.name;
        EXPECT_TRUE(FailsWith(10038, -1, wineSituation)) << call.name << " of " << handle;
    }
}

using HandleCheck = Started;

TEST_F(HandleCheck, EveryCallRefusesTheInvalidHandle) {
    ExpectNoSocket(Winsock::InvalidSocket);
}

TEST_F(HandleCheck, EveryCallRefusesNumbersThatWereNeverSockets) {
    for (const Winsock::Handle handle :
         {1023ULL, 1024ULL, 65536ULL, 1048575ULL, 1048576ULL, 0x7FFFFFFFULL, 0x80000000ULL,
          0xFFFFFFFFULL, 0x100000000ULL, 0x8000000000000000ULL}) {
        ExpectNoSocket(handle);
    }
}

TEST_F(HandleCheck, EveryCallRefusesAClosedSocket) {
    OwnedSocket socket = NewBoundStream();
    const Winsock::Handle handle = socket.Take();
    EXPECT_TRUE(Succeeds(Winsock::closesocket(handle)));
    ExpectNoSocket(handle);
}

TEST_F(HandleCheck, EveryCallRefusesAHandleThatOnlyItsLowHalfMakesASocket) {
    const OwnedSocket socket = NewBoundStream();
    ExpectNoSocket(socket.Get() | 0x100000000ULL);
    EXPECT_NE(LocalPort(socket), 0U);
}

TEST_F(HandleCheck, AFileThatGotTheNumberOfAClosedSocketIsNotTouched) {
    OwnedSocket socket = NewBoundStream();
    const Winsock::Handle handle = socket.Take();
    EXPECT_TRUE(Succeeds(Winsock::closesocket(handle)));
    const FileInPlaceOf file(handle);
    ExpectNoSocket(handle, "the handle of a file");
    EXPECT_TRUE(file.IsStillOpen());
}

TEST_F(HandleCheck, StandardInputIsNeverTouched) {
    const WatchedStandardInput input("all of this");
    ExpectNoSocket(0);
    EXPECT_EQ(WatchedStandardInput::Rest(), "all of this");
}

TEST_F(HandleCheck, ANumberThatIsUsedAgainIsAFreshSocket) {
    OwnedSocket first = NewBoundDatagram();
    SetNonBlocking(first);
    first.Close();
    const OwnedSocket second = NewStream();
    EXPECT_TRUE(FailsWith(10057, TryReceive(second)));
    EXPECT_TRUE(FailsWith(10022, Winsock::listen(second.Get(), 5)));
}

}  // namespace
}  // namespace Conformance

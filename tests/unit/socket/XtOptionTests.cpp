// The options of the extended socket: timeouts, reuse of addresses, broadcast.
#include <climits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtOptions : public XtTest {};
class XtOptionBroadcast : public XtTest {};

struct Setter {
    std::string name;
    std::string call;  // of the system
    std::string description;
    std::function<void(SocketXt&)> set;
};

std::vector<Setter> Setters() {
    return {{"SetReceiveTimeout", "setsockopt(1001, 0xFFFF, 0x1006, 1500, 4)",
             "cannot set recv timeout", [](SocketXt& socket) { socket.SetReceiveTimeout(1500); }},
            {"SetSendTimeout", "setsockopt(1001, 0xFFFF, 0x1005, 2500, 4)",
             "cannot set send timeout", [](SocketXt& socket) { socket.SetSendTimeout(2500); }},
            {"SetReuseAddress", "setsockopt(1001, 0xFFFF, 0x4, 1, 4)", "cannot set reuse address",
             [](SocketXt& socket) { socket.SetReuseAddress(); }}};
}

XtFailure FailureOfSetter(const Setter& setter, const std::string& host, const std::string& port) {
    return {"VelNet::SocketXtImpl::" + setter.name, setter.description, "::setsockopt", host, port};
}

const XtFailure NoBroadcast{"VelNet::SocketXtImpl::SetSocketForBroadcast",
                            "cannot set socket option for broadcast", "::setsockopt(SO_BROADCAST)"};

TEST_F(XtOptions, EachIsOneCallAndChangesNothing) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    for (const Setter& setter : Setters()) {
        ClearTranscript();
        setter.set(*socket);
        EXPECT_EQ(Transcript(), Lines{setter.call});
        EXPECT_EQ(FieldsOf(*socket), before);
    }
    ExpectRecords({});
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(XtOptions, TimeoutsArePassedOnInAllTheirBits) {
    const auto socket = MakeXt();
    for (const unsigned int timeout : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        const std::string number = std::to_string(static_cast<int>(timeout));
        socket->SetReceiveTimeout(timeout);
        EXPECT_EQ(LastEventOf("setsockopt").text,
                  "setsockopt(1001, 0xFFFF, 0x1006, " + number + ", 4)");
        socket->SetSendTimeout(timeout);
        EXPECT_EQ(LastEventOf("setsockopt").text,
                  "setsockopt(1001, 0xFFFF, 0x1005, " + number + ", 4)");
    }
}

// Unlike the classic socket's, and under its own name each.
TEST_F(XtOptions, EachFailureIsReportedAndThrown) {
    const auto socket = MakeAddressedXt();
    for (const Setter& setter : Setters()) {
        SCOPED_TRACE(setter.name);
        ExpectEachXtFailure({
            .failWith = [](int number) { On::Setsockopt().Fails(number); },
            .operation = [&] { setter.set(*socket); },
            .failure = FailureOfSetter(setter, LocalText, LocalService),
            .calls = {setter.call, "WSAGetLastError()"},
            .memory = MemoryOf(*socket),
        });
    }
}

TEST_F(XtOptions, FailureTextsNameTheirOperation) {
    const auto socket = MakeXt();
    On::Setsockopt().Fails(10042).Fails(10042).Fails(10042);
    EXPECT_EQ(Catch([&] { socket->SetReceiveTimeout(5); }).text,
              u"VelNet::SocketXtImpl::SetReceiveTimeout , cannot set recv timeout , "
              u"::setsockopt ,  , errno = \u273A Bad protocol option");
    EXPECT_EQ(Catch([&] { socket->SetSendTimeout(5); }).text,
              u"VelNet::SocketXtImpl::SetSendTimeout , cannot set send timeout , "
              u"::setsockopt ,  , errno = \u273A Bad protocol option");
    EXPECT_EQ(Catch([&] { socket->SetReuseAddress(); }).text,
              u"VelNet::SocketXtImpl::SetReuseAddress , cannot set reuse address , "
              u"::setsockopt ,  , errno = \u273A Bad protocol option");
}

TEST_F(XtOptions, EveryStateGoesToTheSystem) {
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state);
        for (const Setter& setter : Setters())
            setter.set(*socket);
        EXPECT_EQ(CountOf("setsockopt"), 3);
    }
    const auto closed = MakeClosedXt();
    On::Setsockopt().Fails(10038);
    EXPECT_EQ(Catch([&] { closed->SetReuseAddress(); }).code, 10038);
    EXPECT_EQ(LastEventOf("setsockopt").text, "setsockopt(INVALID, 0xFFFF, 0x4, 1, 4)");
}

TEST_F(XtOptions, SuccessNeedsNoMemory) {
    const auto socket = MakeXt();
    const Allocations::Mark mark;
    socket->SetReceiveTimeout(1);
    socket->SetSendTimeout(1);
    socket->SetReuseAddress();
    socket->SetSocketForBroadcast();
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(XtOptionBroadcast, IsOneCall) {
    for (const auto& socket : {MakeDatagramXt().Take(), MakeXt().Take()}) {
        ClearTranscript();
        socket->SetSocketForBroadcast();
        EXPECT_EQ(Transcript(), Lines{"setsockopt(" + std::to_string(socket->GetHandle()) +
                                      ", 0xFFFF, 0x20, 1, 4)"});
        SetRouterFlag(ConnectionCategory, 0);
        socket->Release();
    }
}

TEST_F(XtOptionBroadcast, EachFailureIsReportedWithoutAddresses) {
    const auto socket = MakeAddressedXt();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Setsockopt().Fails(number); },
        .operation = [&] { socket->SetSocketForBroadcast(); },
        .failure = NoBroadcast,
        .calls = {"setsockopt(1001, 0xFFFF, 0x20, 1, 4)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtOptionBroadcast, StreamSocketIsToldWhatTheSystemSays) {
    const auto socket = MakeXt();
    On::Setsockopt().Fails(10042);
    const Caught caught = Catch([&] { socket->SetSocketForBroadcast(); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::SetSocketForBroadcast , cannot set socket option for "
              u"broadcast , ::setsockopt(SO_BROADCAST) ,  , errno = \u273A Bad protocol option");
    EXPECT_EQ(caught.code, 10042);
}

}  // namespace
}  // namespace SocketTests

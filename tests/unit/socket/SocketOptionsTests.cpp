#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "SocketFixture.h"

namespace SocketTests {
namespace {

class SocketOptions : public SocketTest {};

// One of the setters that only log their failures.
struct Setter {
    const char* name;
    void (*set)(Socket&);
    const char* call;  // of the socket 1001
    const char* failure;
};

// The option and value stand in both the setter's call and the transcript's line.
constexpr Setter Setters[] = {
    {"SetReceiveTimeout", [](Socket& socket) { socket.SetReceiveTimeout(1500); },
     "setsockopt(1001, 0xFFFF, 0x1006, 1500, 4)",
     "VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Receive Timeout"},
    // Required: the label of the receive timeout.
    {"SetSendTimeout", [](Socket& socket) { socket.SetSendTimeout(2500); },
     "setsockopt(1001, 0xFFFF, 0x1005, 2500, 4)",
     "VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Send Timeout"},
    {"SetReuseAddress", [](Socket& socket) { socket.SetReuseAddress(); },
     "setsockopt(1001, 0xFFFF, 0x4, 1, 4)",
     "VelNet::SocketImpl::SetReuseAddress() - FAIL. Cannot set Reuse Address"},
};

unsigned int ValuePassed() {
    const std::string bytes = LastEventOf("setsockopt").bytes;
    unsigned int value = 0;
    EXPECT_EQ(bytes.size(), sizeof value);
    std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
    return value;
}

TEST_F(SocketOptions, SettersMakeOneCallAndLogNothing) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const Setter& setter : Setters) {
        ClearTranscript();
        setter.set(*socket);
        EXPECT_EQ(Transcript(), Lines{setter.call});
        EXPECT_EQ(FieldsOf(*socket), before) << setter.name;
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketOptions, TimeoutsArePassedAsTheyStand) {
    const auto socket = MakeSocket();
    for (const unsigned int milliseconds :
         {0U, 1U, 999U, 1000U, 0x10000U, 0x7FFFFFFFU, 0x80000000U, 4294967295U}) {
        socket->SetReceiveTimeout(milliseconds);
        EXPECT_EQ(ValuePassed(), milliseconds);
        socket->SetSendTimeout(milliseconds);
        EXPECT_EQ(ValuePassed(), milliseconds);
    }
    EXPECT_EQ(EventsOf("setsockopt").size(), 16U);
}

TEST_F(SocketOptions, ReuseIsSwitchedOnWithTheValueOne) {
    const auto socket = MakeSocket();
    socket->SetReuseAddress();
    EXPECT_EQ(ValuePassed(), 1U);
}

TEST_F(SocketOptions, FailureIsLoggedAndNotThrown) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const Setter& setter : Setters) {
        for (const int error : ErrorNumbers()) {
            ClearTranscript();
            On::Setsockopt().Fails(error);
            EXPECT_EQ(Catch([&] { setter.set(*socket); }), Caught()) << setter.name;
            EXPECT_EQ(Transcript(),
                      (Lines{setter.call, "WSAGetLastError()",
                             LogLine(ErrorCategory, FailureText(setter.failure, error))}));
            EXPECT_EQ(FieldsOf(*socket), before) << setter.name << ' ' << error;
        }
    }
}

TEST_F(SocketOptions, FailuresAreFailureRecords) {
    const auto socket = MakeSocket();
    On::Setsockopt().Fails(10042).Fails(10042).Fails(10042);
    std::vector<Record> expected;
    for (const Setter& setter : Setters) {
        setter.set(*socket);
        expected.push_back(FailureRecord(FailureText(setter.failure, 10042)));
    }
    ExpectRecords(expected);
    EXPECT_EQ(FormatterRequests(), 3);
}

TEST_F(SocketOptions, FailedSendTimeoutNamesTheReceiveTimeoutsFunction) {
    const auto socket = MakeSocket();
    On::Setsockopt().Fails(10038);
    socket->SetSendTimeout(1);
    EXPECT_EQ(LoggedTexts(ErrorCategory),
              (std::vector<std::u16string>{
                  u"VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Send Timeout, "
                  u"errno = \u2736 Socket operation on nonsocket"}));
}

TEST_F(SocketOptions, FailureIsLoggedOnlyWhenTheErrorRouterIsOn) {
    const auto socket = MakeSocket();
    for (const Setter& setter : Setters) {
        for (const Routers& routers : AllCombinationsOfRouters()) {
            Switch(routers);
            ClearTranscript();
            const int requestsBefore = FormatterRequests();
            On::Setsockopt().Fails(10022);
            setter.set(*socket);
            EXPECT_EQ(CountOf("LogMessage"), routers.error ? 1 : 0) << setter.name;
            EXPECT_EQ(FormatterRequests() - requestsBefore, routers.error ? 1 : 0) << setter.name;
        }
    }
}

TEST_F(SocketOptions, FailureWithTheErrorRouterOffNeedsNoMemory) {
    const auto socket = MakeSocket();
    Switch({.error = false, .connection = true, .packet = true, .verbose = true});
    for (const Setter& setter : Setters) {
        On::Setsockopt().Fails(10022);
        const Allocations::Mark mark;
        setter.set(*socket);
        EXPECT_EQ(mark.Requests(), 0U) << setter.name;
    }
}

TEST_F(SocketOptions, AnyFlagByteButZeroLogsTheFailure) {
    const auto socket = MakeSocket();
    for (int flag = 0; flag < 256; ++flag) {
        SetRouterFlag(ErrorCategory, static_cast<unsigned char>(flag));
        ClearTranscript();
        On::Setsockopt().Fails(10042);
        socket->SetReuseAddress();
        EXPECT_EQ(CountOf("LogMessage"), flag == 0 ? 0 : 1) << flag;
    }
}

TEST_F(SocketOptions, WhatTheLogThrowsIsLost) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const Setter& setter : Setters) {
        On::Setsockopt().Fails(10042).Fails(10042);
        On::LogMessage().Throws(std::runtime_error("the disk is full")).Throws(7);
        setter.set(*socket);
        setter.set(*socket);
        EXPECT_EQ(FieldsOf(*socket), before) << setter.name;
    }
    EXPECT_EQ(CountOf("LogMessage"), 6);
}

TEST_F(SocketOptions, FailureWithoutMemoryForItsTextIsLost) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const Setter& setter : Setters) {
        const std::size_t failures = FailEveryAllocation([&](std::size_t n) {
            ClearTranscript();
            On::Setsockopt().Fails(10055);
            const Starved starved = Starve(n, [&] { setter.set(*socket); });
            EXPECT_FALSE(starved.outOfMemory) << n;
            EXPECT_EQ(CountOf("LogMessage"), starved.happened ? 0 : 1) << n;
            EXPECT_EQ(FieldsOf(*socket), before) << n;
            return starved.happened;
        });
        EXPECT_GE(failures, 1U) << setter.name;
    }
}

TEST_F(SocketOptions, SettersIgnoreTheState) {
    for (const SocketState state : AllStates) {
        const auto socket = MakeSocket(state);
        for (const Setter& setter : Setters)
            setter.set(*socket);
        EXPECT_EQ(CountOf("setsockopt"), 3) << state;
        EXPECT_EQ(FieldsOf(*socket).state, state);
        socket->Close();
    }
}

TEST_F(SocketOptions, FailuresWhileTheLayerIsDownAreSilent) {
    SocketImpl socket(1001, STATE_CONNECTED);
    Winsock::socket(2, 1, 6);
    BringLayerDown();
    for (const Setter& setter : Setters) {
        ClearTranscript();
        On::Setsockopt().Fails(10093);
        setter.set(socket);
        EXPECT_EQ(TranscriptWithout({"WSAGetLastError"}), Lines{setter.call});
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketOptions, NonBlockingIsOneCall) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    EXPECT_TRUE(socket->SetNonBlocking());
    EXPECT_TRUE(socket->SetNonBlocking());
    EXPECT_EQ(Transcript(), Lines(2, "ioctlsocket(1001, 0x8004667E, 1)"));
    EXPECT_EQ(FieldsOf(*socket), before);
}

TEST_F(SocketOptions, RefusedNonBlockingIsFalseInSilence) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const int error : ErrorNumbers()) {
        ClearTranscript();
        On::Ioctlsocket().Fails(error);
        bool accepted = true;
        EXPECT_EQ(Catch([&] { accepted = socket->SetNonBlocking(); }), Caught()) << error;
        EXPECT_FALSE(accepted) << error;
        EXPECT_EQ(TranscriptWithout({"WSAGetLastError"}), Lines{"ioctlsocket(1001, 0x8004667E, 1)"})
            << error;
        EXPECT_EQ(FieldsOf(*socket), before) << error;
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketOptions, NonBlockingIgnoresTheState) {
    for (const SocketState state : AllStates) {
        const auto socket = MakeSocket(state);
        EXPECT_TRUE(socket->SetNonBlocking()) << state;
        EXPECT_EQ(CountOf("ioctlsocket"), 1) << state;
        EXPECT_EQ(FieldsOf(*socket).state, state);
        socket->Close();
    }
}

}  // namespace
}  // namespace SocketTests

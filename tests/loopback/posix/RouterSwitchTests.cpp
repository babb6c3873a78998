// Routers that are switched while an operation is in the system: what counts is whether they are on
// when its call has returned.
#include <VelLog/LogControl.h>
#include <loopback/LoopbackTest.h>
#include <loopback/posix/FaultTest.h>

#include <functional>

namespace Loopback {
namespace {

using namespace SystemCalls;

class RouterSwitch : public LoopbackTest {
protected:
    // Runs the operation twice: with the router switched on from within its system call, and
    // switched off. Only the first time leaves the record, whose text the operation returns.
    void ExpectOnlyWhatIsOnAfterwards(SystemCall call, const char* category,
                                      const std::function<std::u16string()>& operation) {
        for (const bool on : {true, false}) {
            Switch(category, !on);
            const HookedCall switches(call, SwitchesAfterwards(category, on), {.count = 1});
            const std::u16string record = operation();
            EXPECT_GE(switches.Seen(), 1U);
            EXPECT_EQ(Sink().Take(), on ? (Records{{category, record}}) : Records{});
        }
    }

private:
    static void Switch(const char* category, bool on) {
        EXPECT_TRUE(VelLog::SetRouterEnabled("Network", category, on));
    }

    static Hook SwitchesAfterwards(const char* category, bool on) {
        return [=](const Call& call) {
            const Word result = call.Make();
            const int error = errno;
            Switch(category, on);
            errno = error;
            return result;
        };
    }
};

TEST_F(RouterSwitch, DuringASendCounts) {
    const Connection connection = Connected();
    const std::u16string ends =
        EndpointsOf(PortOf(*connection.client), connection.client->GetRemoteAddress().GetPort());
    ExpectOnlyWhatIsOnAfterwards(SystemCall::Send, PacketTrace, [&] {
        EXPECT_EQ(connection.client->Send("abc", 3), 3);
        return u"Sent 3 bytes, " + ends;
    });
    ExpectOnlyWhatIsOnAfterwards(SystemCall::Send, VerbosePacketTrace, [&] {
        EXPECT_EQ(connection.client->Send("abc", 3), 3);
        return u"Sent 3 bytes, " + ends + u", data: 616263";
    });
}

TEST_F(RouterSwitch, DuringAReceiveCounts) {
    const Connection connection = Connected();
    const std::u16string ends = EndpointsOf(PortOf(*connection.server), PortOf(*connection.client));
    SendAll(*connection.client, "abcabcabcabc");
    ExpectOnlyWhatIsOnAfterwards(SystemCall::Recv, PacketTrace, [&] {
        EXPECT_EQ(ReceiveExactly(*connection.server, 3), "abc");
        return u"Received 3 bytes, " + ends;
    });
    ExpectOnlyWhatIsOnAfterwards(SystemCall::Recv, VerbosePacketTrace, [&] {
        EXPECT_EQ(ReceiveExactly(*connection.server, 3), "abc");
        return u"Received 3 bytes, " + ends + u", data: 616263";
    });
}

TEST_F(RouterSwitch, DuringAConnectCounts) {
    const SocketPtr listener = Listening();
    ExpectOnlyWhatIsOnAfterwards(SystemCall::Connect, ConnectionTrace, [&] {
        const SocketPtr client = StreamSocket();
        client->Connect(LocalHost(), PortOf(*listener));
        const std::u16string record =
            u"Connected, " + EndpointsOf(PortOf(*client), PortOf(*listener));
        EnableOnly({});
        return record;
    });
}

TEST_F(RouterSwitch, DuringAnAcceptCounts) {
    const SocketPtr listener = Listening();
    const SocketPtr one = ConnectedTo(*listener);
    const SocketPtr other = ConnectedTo(*listener);
    ExpectOnlyWhatIsOnAfterwards(SystemCall::Accept4, ConnectionTrace, [&] {
        VelNet::SocketAddress remote;
        const SocketPtr server = listener->Accept(remote);
        EnableOnly({});
        return u"Connected, " + EndpointsOf(PortOf(*listener), remote.GetPort());
    });
}

TEST_F(RouterSwitch, DuringACloseCounts) {
    ExpectOnlyWhatIsOnAfterwards(SystemCall::Close, ConnectionTrace, [] {
        StreamSocket()->Close();
        return u"Disconnected, " + Endpoints("0.0.0.0", 0, "0.0.0.0", 0);
    });
}

TEST_F(RouterSwitch, DuringAFailureCounts) {
    const SocketPtr socket = Bound(StreamSocket());
    for (const bool on : {true, false}) {
        if (!on) EnableOnly({Error});
        const HookedCall fails(SystemCall::Listen, [on](const Call& call) {
            EXPECT_TRUE(VelLog::SetRouterEnabled("Network", Error, on));
            return call.Fail(ENOBUFS);
        });
        const Failure failure = FailureOf([&] { socket->Listen(); });
        EXPECT_EQ(failure.code, 10055);
        EXPECT_EQ(Sink().Take(), on ? (Records{{Error, failure.text}}) : Records{});
    }
}

}  // namespace
}  // namespace Loopback

// A log that uses the very socket whose records it gets. What a transfer's records tell was so when
// the transfer was made, and is told to the end, whatever the log makes of the socket between them.
#include "XtFixture.h"

namespace SocketTests {
namespace {

// Longer than a text that stands in its string itself.
constexpr char OldLocalHost[] = "old.local.host.example";
constexpr char OldLocalPort[] = "old-local-service";
constexpr char OldRemoteHost[] = "old.remote.host.example";
constexpr char OldRemotePort[] = "old-remote-service";
constexpr char NewLocalHost[] = "new.local.host.of.another.example";
constexpr char NewLocalPort[] = "new-local-service-of-another";
constexpr char NewRemoteHost[] = "new.remote.host.of.another.example";
constexpr char NewRemotePort[] = "new-remote-service-of-another";

class XtUseInLog : public XtTest {
protected:
    void SetUp() override {
        XtTest::SetUp();
        Switch({});
        socket_ = MakeXt(STATE_CONNECTED, Winsock::TypeDatagram, Winsock::ProtocolUdp);
        socket_->Connect(OldRemoteHost, OldRemotePort);
        socket_->Bind(OldLocalHost, OldLocalPort);
        SwitchPacketTracing(true, true);
    }

    void TearDown() override {
        Switch({});
        socket_ = {};
        host_ = {};
        port_ = {};
        XtTest::TearDown();
    }

    // While the plain record of a transfer is written.
    static void InThePlainRecord(const std::function<void()>& use) {
        Observe("LogMessage", [use](const Event&) {
            if (LoggedMessages().size() == 1) use();
        });
    }

    // To connect makes new local texts too.
    void GiveOtherTexts() {
        socket_->Connect(NewRemoteHost, NewRemotePort);
        socket_->Bind(NewLocalHost, NewLocalPort);
    }

    void ExpectOldTextsInRecords(const std::string& event, const std::string& remoteHost,
                                 const std::string& remotePort) {
        ExpectRecords(
            {XtTransferRecord(event, 3, OldLocalHost, OldLocalPort, remoteHost, remotePort),
             XtTransferRecordWithData(event, 3, OldLocalHost, OldLocalPort, remoteHost, remotePort,
                                      "616263")});
        const XtFields fields = FieldsOf(*socket_);
        EXPECT_EQ((Lines{fields.localHost, fields.localPort, fields.remoteHost, fields.remotePort}),
                  (Lines{NewLocalHost, NewLocalPort, NewRemoteHost, NewRemotePort}));
    }

    VelBase::ReturnPtrI<SocketXtImpl> socket_;
    char buffer_[8] = {};
    VelBase::ReturnString host_;
    VelBase::ReturnString port_;
};

TEST_F(XtUseInLog, OfSendLeavesItsRecordsAsTheyWere) {
    InThePlainRecord([&] { GiveOtherTexts(); });
    EXPECT_EQ(socket_->Send("abc", 3), 3);
    ExpectOldTextsInRecords("Sent", OldRemoteHost, OldRemotePort);
}

TEST_F(XtUseInLog, OfReceiveLeavesItsRecordsAsTheyWere) {
    InThePlainRecord([&] { GiveOtherTexts(); });
    On::Recv().Delivers("abc");
    EXPECT_EQ(socket_->Receive(buffer_, sizeof buffer_), 3);
    ExpectOldTextsInRecords("Received", OldRemoteHost, OldRemotePort);
}

TEST_F(XtUseInLog, OfRecvFromLeavesItsRecordsAsTheyWere) {
    InThePlainRecord([&] {
        GiveOtherTexts();
        host_ = "another.host.of.the.callers.example";
        port_ = "another-port-of-the-callers";
    });
    On::Recvfrom().Delivers("abc", "10.0.0.9", 4711);
    On::Getnameinfo().Returns("sender.of.a.datagram.example", "service-of-the-sender");
    EXPECT_EQ(socket_->RecvFrom(buffer_, sizeof buffer_, host_, port_), 3);
    ExpectOldTextsInRecords("Recvfrom", "sender.of.a.datagram.example", "service-of-the-sender");
    EXPECT_STREQ(host_.c_str(), "another.host.of.the.callers.example");
    EXPECT_STREQ(port_.c_str(), "another-port-of-the-callers");
}

}  // namespace
}  // namespace SocketTests

// Which records make which conversations.
#include "velsock-trace/Conversations.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "velsock-trace/LineParser.h"

namespace {

using namespace VelSockTrace;

class Recorder : public Observer {
public:
    void Forgotten(const Conversation& conversation) override { all.push_back(conversation); }
    void Joined(unsigned int number, unsigned int otherEnd) override { joints[otherEnd] = number; }

    std::vector<Conversation> all;
    Joints joints;
};

// Takes records of the plain form; times are seconds.
class Logbook {
public:
    explicit Logbook(const Limits& limits = {}) : conversations_(recorder_, limits) {}

    Logbook& Take(int second, const std::string& text, std::size_t log = 0,
                  const std::string& process = "") {
        const std::string time = "2026-11-22T13:00:" + std::to_string(10 + second) + ".000000Z ";
        const std::string category = text.starts_with("VelNet")           ? "Error"
                                     : text.find(", data: ") != text.npos ? "Verbose Packet Trace"
                                     : text.find(" bytes") != text.npos   ? "Packet Trace"
                                                                          : "Connection Trace";
        const std::string line = time + process + "Network/" + category + ": " + text;
        Record record;
        EXPECT_EQ(parser_.Parse(line, record), LineKind::Record) << line;
        isTaken = conversations_.Take(record, log);
        return *this;
    }

    const std::vector<Conversation>& All() {
        conversations_.Finish();
        return recorder_.all;
    }
    const std::vector<Conversation>& SoFar() { return recorder_.all; }
    const Joints& JointsSoFar() { return recorder_.joints; }

    bool isTaken = false;

private:
    LineParser parser_;
    Recorder recorder_;
    Conversations conversations_;
};

std::string Between(const char* local, const char* remote) {
    return std::string("Local address: ") + local + ", Remote address: " + remote;
}

const std::string Client = Between("10.0.0.1 (40000)", "10.0.0.2 (80)");
const std::string Server = Between("10.0.0.2 (80)", "10.0.0.1 (40000)");
const std::string Named = Between("vm (0)", "10.0.0.2 (80)");
const std::string Accepted = Between("10.0.0.2 (0)", "10.0.0.1 (40000)");
const std::string Nameless = Between(" ()", " ()");
const std::string ClosedByPeer =
    "VelNet::SocketImpl::Receive() - FAIL. The ::recv could not be completed because the "
    "connection has "
    "been closed.";
const std::string Reset =
    "VelNet::SocketImpl::Receive() - FAIL. The ::recv failed, errno = \xE2\x9D\x86 Connection "
    "reset by peer";

TEST(ConversationsOfOneLog, HaveBytesEachWayAndAnEnd) {
    Logbook book;
    book.Take(0, "Connected, " + Client).Take(1, "Sent 5 bytes, " + Client);
    book.Take(2, "Received 7 bytes, " + Client).Take(3, "Sent 1 bytes, " + Client);
    book.Take(4, "Disconnected, " + Client);
    ASSERT_EQ(book.All().size(), 1U);
    const Conversation& only = book.All()[0];
    EXPECT_EQ(only.number, 1U);
    EXPECT_EQ(only.flows[0].Bytes(), 6U);
    EXPECT_EQ(only.flows[0].Transfers(), 2U);
    EXPECT_EQ(only.flows[1].Bytes(), 7U);
    EXPECT_EQ(only.last - only.start, 4'000'000);
    EXPECT_EQ(OutcomeOf(only), Outcome::Orderly);
    EXPECT_EQ(ClientOf(only), 0U);
}

TEST(ConversationsOfOneLog, CountAPairOfRecordsOnce) {
    Logbook book;
    book.Take(0, "Sent 2 bytes, " + Client).Take(0, "Sent 2 bytes, " + Client + ", data: 4142");
    book.Take(0, "Sent 1 bytes, " + Client).Take(0, "Sent 1 bytes, " + Client + ", data: 43");
    EXPECT_EQ(book.All()[0].flows[0].Bytes(), 3U);
    EXPECT_EQ(book.All()[0].flows[0].Transfers(), 2U);
    EXPECT_EQ(OutcomeOf(book.All()[0]), Outcome::Unknown);
}

TEST(ConversationsOfOneLog, AreOpenUntilTheirEndIsRecorded) {
    Logbook book;
    book.Take(0, "Connected, " + Client);
    EXPECT_EQ(OutcomeOf(book.All()[0]), Outcome::Open);
}

TEST(ConversationsOfOneLog, TheSameEndsMakeANewOneAfterTheEnd) {
    Logbook book;
    for (int round = 0; round < 2; ++round)
        book.Take(round, "Connected, " + Client).Take(round, "Disconnected, " + Client);
    book.Take(3, "Connected, " + Client).Take(4, "Connected, " + Client);
    ASSERT_EQ(book.All().size(), 4U);
    EXPECT_EQ(OutcomeOf(book.All()[2]), Outcome::Unknown);
    EXPECT_EQ(OutcomeOf(book.All()[3]), Outcome::Open);
}

TEST(ConversationsOfTwoLogs, AreOneWithTwoSides) {
    Logbook book;
    book.Take(0, "Connected, " + Server, 1).Take(0, "Connected, " + Client, 0);
    book.Take(1, "Sent 5 bytes, " + Client, 0).Take(1, "Received 5 bytes, " + Server, 1);
    book.Take(2, "Disconnected, " + Client, 0).Take(3, "Disconnected, " + Server, 1);
    ASSERT_EQ(book.All().size(), 1U);
    const Conversation& only = book.All()[0];
    EXPECT_TRUE(only.sides[1].isLogged);
    EXPECT_EQ(only.ends[0].port, 80);
    EXPECT_EQ(ClientOf(only), 1U);
    EXPECT_EQ(only.flows[1].Bytes(), 5U);
    EXPECT_EQ(only.flows[0].Bytes(), 0U);
}

TEST(ConversationsOfTwoLogs, LostRecordsOfOneSideAreThoseOfTheOther) {
    Logbook book;
    book.Take(0, "Connected, " + Client, 0).Take(0, "Connected, " + Server, 1);
    book.Take(1, "Received 100 bytes, " + Server, 1).Take(1, "Sent 5 bytes, " + Client, 0);
    EXPECT_EQ(book.All()[0].flows[0].Bytes(), 100U);
}

TEST(ConversationsOfExtendedSockets, AreJoinedByBytesAndTime) {
    Logbook book;
    book.Take(0, "Connected, " + Named, 0).Take(1, "Connected, " + Accepted, 1);
    book.Take(1, "Sent 5 bytes, " + Named, 0).Take(1, "Received 5 bytes, " + Nameless, 1);
    book.Take(2, "Disconnected, " + Named, 0).Take(2, "Disconnected, " + Nameless, 1);
    ASSERT_EQ(book.All().size(), 1U);
    const Conversation& only = book.All()[0];
    EXPECT_EQ(Name(only.ends[0]), "10.0.0.1:40000");
    EXPECT_EQ(Name(only.ends[1]), "10.0.0.2:80");
    EXPECT_EQ(only.flows[0].Bytes(), 5U);
    EXPECT_EQ(OutcomeOf(only), Outcome::Orderly);
    EXPECT_EQ(book.JointsSoFar(), (Joints{{2, 1}}));
}

TEST(ConversationsOfExtendedSockets, AreNotJoinedIfAnythingContradicts) {
    for (const char* const text : {"Received 6 bytes, ", "Sent 5 bytes, "}) {
        Logbook book;
        book.Take(0, "Sent 5 bytes, " + Named, 0);
        book.Take(0, text + Accepted, 1);
        EXPECT_EQ(book.All().size(), 2U) << text;
    }
    Logbook late;
    late.Take(0, "Sent 5 bytes, " + Named, 0).Take(3, "Received 5 bytes, " + Accepted, 1);
    EXPECT_EQ(late.All().size(), 2U);
    Logbook elsewhere;
    elsewhere.Take(0, "Sent 5 bytes, " + Named, 0);
    elsewhere.Take(0, "Received 5 bytes, " + Between("10.0.0.3 (0)", "10.0.0.1 (40000)"), 1);
    EXPECT_EQ(elsewhere.All().size(), 2U);
}

TEST(ConversationsOfExtendedSockets, TheListeningSocketsEndIsNotTheConnections) {
    Logbook book;
    book.Take(0, "Connected, " + Accepted).Take(0, "Disconnected, " + Accepted);
    book.Take(1, "Received 5 bytes, " + Nameless)
        .Take(2,
              "VelNet::SocketXtImpl::Receive , x , ::recv , : :  "
              ", errno = \xE2\x9D\x86 Connection reset by peer");
    EXPECT_TRUE(book.isTaken);
    book.Take(3, "Disconnected, " + Nameless);
    ASSERT_EQ(book.All().size(), 1U);
    EXPECT_EQ(book.All()[0].flows[1].Bytes(), 5U);
    EXPECT_EQ(book.All()[0].last - book.All()[0].start, 3'000'000);
    EXPECT_EQ(book.All()[0].loss, 10054);
    EXPECT_EQ(ClientOf(book.All()[0]), 1U);
}

TEST(ConversationsOfExtendedSockets, OfTheSameEndsAreMarkedAsUncertain) {
    Logbook book;
    book.Take(0, "Connected, " + Named).Take(0, "Connected, " + Named);
    book.Take(1, "Disconnected, " + Named).Take(2, "Disconnected, " + Named);
    ASSERT_EQ(book.All().size(), 2U);
    for (const Conversation& each : book.All()) {
        EXPECT_TRUE(each.isUncertain);
        EXPECT_EQ(OutcomeOf(each), Outcome::Orderly);
    }
}

TEST(ConversationsWithMarks, AreToldApart) {
    Logbook book;
    for (const char* const mark : {"[7:8] #1 ", "[7:8] #2 ", "[9:8] #1 "})
        book.Take(0, "Connected, " + Named, 0, mark);
    book.Take(1, "Sent 5 bytes, " + Named, 0, "[7:8] #2 ");
    book.Take(1, Reset, 0, "[9:8] #1 ");
    ASSERT_EQ(book.All().size(), 3U);
    for (const Conversation& each : book.All()) {
        EXPECT_FALSE(each.isUncertain);
        EXPECT_EQ(each.flows[0].Bytes(), each.number == 2 ? 5U : 0U);
        EXPECT_EQ(each.loss, each.number == 3 ? 10054 : 0);
    }
}

TEST(ConversationsWithMarks, KeepTheEndsThatTheirFirstRecordHas) {
    Logbook book;
    book.Take(0, "Connected, " + Accepted, 0, "[7:8] #1 ");
    book.Take(1, "Sent 5 bytes, " + Nameless, 0, "[7:8] #1 ");
    book.Take(2, "Disconnected, " + Nameless, 0, "[7:8] #1 ");
    ASSERT_EQ(book.All().size(), 1U);
    EXPECT_EQ(Name(book.All()[0].ends[1]), "10.0.0.1:40000");
    EXPECT_EQ(OutcomeOf(book.All()[0]), Outcome::Orderly);
}

TEST(ConversationsThatFail, HaveTheNumberOfTheLoss) {
    Logbook book;
    book.Take(0, "Connected, " + Client).Take(1, Reset).Take(2, "Disconnected, " + Client);
    EXPECT_EQ(OutcomeOf(book.All()[0]), Outcome::Failed);
    EXPECT_EQ(book.All()[0].loss, 10054);
}

TEST(ConversationsThatFail, ThePeersEndIsNoFailure) {
    Logbook book;
    book.Take(0, "Connected, " + Client).Take(1, ClosedByPeer).Take(2, "Disconnected, " + Client);
    EXPECT_EQ(OutcomeOf(book.All()[0]), Outcome::Orderly);
    EXPECT_EQ(book.All()[0].failures, 0U);
    EXPECT_TRUE(book.All()[0].HasClosed(1));
}

TEST(ConversationsThatFail, AFailureOfOneOfSeveralIsNobodys) {
    Logbook book;
    book.Take(0, "Connected, " + Client)
        .Take(0, "Connected, " + Between("10.0.0.1 (40001)", "10.0.0.2 (80)"));
    book.Take(1, Reset);
    EXPECT_FALSE(book.isTaken);
}

TEST(ConversationsThatFail, MayNeverHaveBegun) {
    Logbook book;
    book.Take(
        0,
        "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:1, errno = "
        "\xE2\x9D\x8D Connection refused");
    book.Take(0,
              "VelNet::SocketXtImpl::Connect , cannot , ::connect , vm:0 : ::1:1 , errno = "
              "\xE2\x9D\x8D Connection refused");
    book.Take(
        0,
        "VelNet::SocketXtImpl::Connect , cannot , ::getaddrinfo , nosuch.invalid : 1 , errno = "
        "\xE2\xAB\xB9 host not found");
    book.Take(
        0,
        "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:1, errno = "
        "\xE2\x9C\xB3 Resource temporarily unavailable");
    EXPECT_FALSE(book.isTaken);
    ASSERT_EQ(book.All().size(), 3U);
    EXPECT_EQ(Name(book.All()[0].ends[1]), "127.0.0.1:1");
    EXPECT_EQ(Name(book.All()[1].ends[1]), "[::1]:1");
    EXPECT_EQ(Name(book.All()[2].ends[1]), "nosuch.invalid:1");
    EXPECT_EQ(book.All()[0].loss, 10061);
    EXPECT_EQ(book.All()[2].loss, 11001);
    EXPECT_EQ(OutcomeOf(book.All()[1]), Outcome::NotConnected);
}

TEST(ConversationsOfDatagrams, AreThoseOfTwoEnds) {
    Logbook book;
    const std::string other = Between("10.0.0.2 (0)", "10.0.0.9 (40000)");
    book.Take(0, "Recvfrom 5 bytes, " + Accepted, 0, "[7:8] #1 ");
    book.Take(0, "Recvfrom 6 bytes, " + other, 0, "[7:8] #1 ");
    book.Take(1, "Sendto 7 bytes, " + Accepted, 0, "[7:8] #1 ");
    ASSERT_EQ(book.All().size(), 2U);
    EXPECT_TRUE(book.All()[0].isDatagrams);
    const Conversation& first = book.All()[book.All()[0].number == 1 ? 0 : 1];
    EXPECT_EQ(first.flows[1].Bytes(), 5U);
    EXPECT_EQ(first.flows[0].Bytes(), 7U);
}

TEST(ConversationsLimits, ForgetTheOneThatIsSilentForLongest) {
    Logbook book({.open = 2, .lingering = 100, .lingerTime = 5'000'000});
    for (const char* const port : {"1 (1)", "1 (2)"})
        book.Take(0, "Connected, " + Between(port, "10.0.0.2 (80)"));
    book.Take(1, "Sent 5 bytes, " + Between("1 (1)", "10.0.0.2 (80)"));
    book.Take(2, "Connected, " + Between("1 (3)", "10.0.0.2 (80)"));
    book.Take(3, "Sent 5 bytes, " + Between("1 (3)", "10.0.0.2 (80)"));
    book.Take(9, "Sent 5 bytes, " + Between("1 (3)", "10.0.0.2 (80)"));
    ASSERT_EQ(book.SoFar().size(), 1U);
    EXPECT_EQ(book.SoFar()[0].number, 2U);
    EXPECT_EQ(OutcomeOf(book.SoFar()[0]), Outcome::Unknown);
}

TEST(ConversationsLimits, TimesOutOfOrderKeepNothingWaiting) {
    Logbook book;
    book.Take(30, "Connected, " + Client).Take(31, "Disconnected, " + Client);
    book.Take(0, "Connected, " + Between("a (1)", "b (2)"));
    EXPECT_EQ(book.SoFar().size(), 1U);
}

}  // namespace

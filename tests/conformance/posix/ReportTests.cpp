// What becomes of the network's reports that datagrams did not arrive.
#include <linux/errqueue.h>
#include <netinet/icmp6.h>
#include <netinet/in.h>
#include <netinet/ip_icmp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <ostream>
#include <tuple>
#include <utility>

#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/SelectScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

constexpr int None = -4711;

struct Report {
    const char* name;
    int origin;
    int type;
    int code;
    int error;
    int answer;  // to a receive call, or 0
    // What it comes in, unless that is the part for reports of its family.
    int level = None;
    int part = None;

    friend void PrintTo(const Report& report, std::ostream* stream) { *stream << report.name; }
};

constexpr int V4 = SO_EE_ORIGIN_ICMP;
constexpr int V6 = SO_EE_ORIGIN_ICMP6;
constexpr int Own = SO_EE_ORIGIN_LOCAL;

constexpr Report Reports[] = {
    {"no port", V4, ICMP_DEST_UNREACH, ICMP_PORT_UNREACH, ECONNREFUSED, 10054},
    {"no network", V4, ICMP_DEST_UNREACH, ICMP_NET_UNREACH, ENETUNREACH, 10054},
    {"no host", V4, ICMP_DEST_UNREACH, ICMP_HOST_UNREACH, EHOSTUNREACH, 10054},
    {"too many hops", V4, ICMP_TIME_EXCEEDED, ICMP_EXC_TTL, EHOSTUNREACH, 10052},
    {"missing parts", V4, ICMP_TIME_EXCEEDED, ICMP_EXC_FRAGTIME, EHOSTUNREACH, 10054},
    {"too long for a link", V4, ICMP_DEST_UNREACH, ICMP_FRAG_NEEDED, EMSGSIZE, 0},
    {"no port of IPv6", V6, ICMP6_DST_UNREACH, ICMP6_DST_UNREACH_NOPORT, ECONNREFUSED, 10054},
    {"too many hops of IPv6", V6, ICMP6_TIME_EXCEEDED, ICMP6_TIME_EXCEED_TRANSIT, EHOSTUNREACH,
     10052},
    {"missing parts of IPv6", V6, ICMP6_TIME_EXCEEDED, ICMP6_TIME_EXCEED_REASSEMBLY, EHOSTUNREACH,
     10054},
    {"too long for a link of IPv6", V6, ICMP6_PACKET_TOO_BIG, 0, EMSGSIZE, 0},
    {"isolated host", V4, ICMP_DEST_UNREACH, ICMP_HOST_ISOLATED, ENONET, 10054},
    {"forbidden in IPv6", V6, ICMP6_DST_UNREACH, ICMP6_DST_UNREACH_ADMIN, EACCES, 10054},
    {"what was sent", SO_EE_ORIGIN_TIMESTAMPING, 0, 0, EHOSTUNREACH, 0},
    {"end of hops with a code of nobody", V4, ICMP_TIME_EXCEEDED, 77, EHOSTUNREACH, 10054},
    {"wrong parameter", V4, ICMP_PARAMETERPROB, ICMP_EXC_TTL, EHOSTUNREACH, 10054},
    {"wrong parameter of IPv6", V6, ICMP6_PARAM_PROB, 0, EPROTO, 10054},
    {"no route of IPv6", V6, ICMP6_DST_UNREACH, ICMP6_DST_UNREACH_NOROUTE, ENETUNREACH, 10054},
    {"what is not too long for IPv6", V6, ICMP6_PACKET_TOO_BIG, 0, EHOSTUNREACH, 10054},
    {"own machine", Own, 0, 0, EMSGSIZE, 0},
    {"own machine, with numbers of nobody", Own, ICMP_TIME_EXCEEDED, ICMP_EXC_TTL, EHOSTUNREACH, 0},
};

bool IsFromQueue(const Call& call) {
    return (call.Argument(2) & MSG_ERRQUEUE) != 0;
}

void Write(const Report& report, msghdr& message) {
    cmsghdr* const part = CMSG_FIRSTHDR(&message);
    part->cmsg_level = report.origin == V6 ? IPPROTO_IPV6 : IPPROTO_IP;
    part->cmsg_type = report.origin == V6 ? IPV6_RECVERR : IP_RECVERR;
    if (report.level != None) part->cmsg_level = report.level;
    if (report.part != None) part->cmsg_type = report.part;
    part->cmsg_len = CMSG_LEN(sizeof(sock_extended_err));
    sock_extended_err error = {};
    error.ee_errno = static_cast<std::uint32_t>(report.error);
    error.ee_origin = static_cast<std::uint8_t>(report.origin);
    error.ee_type = static_cast<std::uint8_t>(report.type);
    error.ee_code = static_cast<std::uint8_t>(report.code);
    std::memcpy(CMSG_DATA(part), &error, sizeof error);
    message.msg_controllen = part->cmsg_len;
}

// While it lives, the system has the reports to tell: the first fails a receive call, and all are
// in the queue.
class ToldReports {
public:
    explicit ToldReports(std::deque<Report> reports) : left_(std::move(reports)) {}

private:
    Word Answer(const Call& call) {
        if (IsFromQueue(call)) return Take(call);
        if (std::exchange(told_, true) || left_.empty()) return call.Make();
        return call.Fail(left_.front().error);
    }
    Word Take(const Call& call) {
        if (left_.empty()) return call.Fail(EAGAIN);
        Write(left_.front(), *call.Pointer<msghdr>(1));
        left_.pop_front();
        return 0;
    }

    std::deque<Report> left_;
    bool told_ = false;
    const HookedCall hook_{SystemCall::Recvmsg, [this](const Call& call) { return Answer(call); }};
};

OwnedSocket NewNonBlocking() {
    OwnedSocket socket = NewBoundDatagram();
    SetNonBlocking(socket);
    return socket;
}

class ReportOfTheNetwork : public Started, public testing::WithParamInterface<Report> {};

TEST_P(ReportOfTheNetwork, HasTheAnswerOfItsKind) {
    const OwnedSocket socket = NewNonBlocking();
    const ToldReports reports({GetParam()});
    if (GetParam().answer != 0) {
        EXPECT_TRUE(FailsWith(GetParam().answer, TryReceive(socket)));
    }
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
}

INSTANTIATE_TEST_SUITE_P(Kinds, ReportOfTheNetwork, testing::ValuesIn(Reports));

using ReportPart = Started;

// Parts beside those of reports, by their numbers.
TEST_F(ReportPart, OfAnotherLevelOrTypeTellsOfNoLoss) {
    constexpr std::pair<int, int> others[] = {
        {IPPROTO_IP, IP_RECVERR - 1},     {IPPROTO_IP, IP_RECVERR + 1},
        {IPPROTO_IP - 1, IP_RECVERR},     {IPPROTO_IP + 1, IP_RECVERR},
        {IPPROTO_IPV6, IPV6_RECVERR - 1}, {IPPROTO_IPV6, IPV6_RECVERR + 1},
        {IPPROTO_IPV6 - 1, IPV6_RECVERR}, {IPPROTO_IPV6 + 1, IPV6_RECVERR},
        {IPPROTO_IPV6, IP_RECVERR},       {IPPROTO_IP, IPV6_RECVERR},
    };
    const OwnedSocket socket = NewNonBlocking();
    for (const auto& [level, type] : others) {
        Report report = Reports[0];
        report.level = level;
        report.part = type;
        const ToldReports reports({report});
        EXPECT_TRUE(FailsWith(10035, TryReceive(socket))) << level << ", " << type;
    }
}

using ReportAnnounced = Started;

OwnedSocket WithAnAnnouncedReport() {
    OwnedSocket gone = NewBoundDatagram();
    const Winsock::AddressIpv4 nobody = LocalAddress(gone);
    gone.Close();
    OwnedSocket socket = NewNonBlocking();
    EXPECT_EQ(SendTo(socket, "anybody?", nobody), 8);
    AwaitEnd(socket.Get());
    return socket;
}

// The queue may have been full when it came.
TEST_F(ReportAnnounced, CountsAsOneThoughTheQueueDoesNotHaveIt) {
    const OwnedSocket socket = WithAnAnnouncedReport();
    const FailingCall nothing(SystemCall::Recvmsg, EAGAIN);
    EXPECT_EQ(ReadyFor(socket), "rw");
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
}

TEST_F(ReportAnnounced, IsNotAskedForAgainOnceTheQueueHasToldIt) {
    const OwnedSocket socket = WithAnAnnouncedReport();
    const CountedCall questions(SystemCall::Getsockopt, {.option = SO_ERROR});
    EXPECT_TRUE(IsReadable(socket, AtOnce));
    EXPECT_EQ(questions.Seen(), 0U);
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
}

using ReportsOfTheNetwork = Started;

// Levels and types of what else the kernel may tell with a message.
constexpr std::pair<int, int> OtherParts[] = {
    {IPPROTO_IP, IP_TTL}, {IPPROTO_IPV6, IPV6_HOPLIMIT}, {SOL_SOCKET, SCM_TIMESTAMPNS}};

// While it lives, a receive call fails as if by a report, but what is queued has no part of it.
class QueuedWithoutReport {
public:
    explicit QueuedWithoutReport(const std::pair<int, int>* part) : part_(part) {}
    bool IsTaken() const { return taken_; }

private:
    Word Answer(const Call& call) {
        if (!IsFromQueue(call))
            return std::exchange(told_, true) ? call.Make() : call.Fail(EHOSTUNREACH);
        if (std::exchange(taken_, true)) return call.Fail(EAGAIN);
        WriteInto(*call.Pointer<msghdr>(1));
        return 0;
    }
    void WriteInto(msghdr& message) const {
        cmsghdr* const part = CMSG_FIRSTHDR(&message);
        message.msg_controllen = part_ == nullptr ? 0 : CMSG_LEN(sizeof(timespec));
        if (part_ == nullptr) return;
        std::tie(part->cmsg_level, part->cmsg_type) = *part_;
        part->cmsg_len = message.msg_controllen;
    }

    const std::pair<int, int>* part_;
    bool told_ = false;
    bool taken_ = false;
    const HookedCall hook_{SystemCall::Recvmsg, [this](const Call& call) { return Answer(call); }};
};

TEST_F(ReportsOfTheNetwork, AreNoneWithoutTheirPart) {
    const OwnedSocket socket = NewNonBlocking();
    const std::pair<int, int>* const none = nullptr;
    for (const auto* part : {none, &OtherParts[0], &OtherParts[1], &OtherParts[2]}) {
        const QueuedWithoutReport queued(part);
        EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
        EXPECT_TRUE(queued.IsTaken());
        EXPECT_EQ(ReadyFor(socket), "w");
    }
}

// The kernel keeps them in two places, and not for ever in the queue.
TEST_F(ReportsOfTheNetwork, AreKnownByTheSocketsErrorWithoutTheQueue) {
    OwnedSocket gone = NewBoundDatagram();
    const Winsock::AddressIpv4 nobody = LocalAddress(gone);
    gone.Close();
    const OwnedSocket socket = NewNonBlocking();
    ASSERT_EQ(SendTo(socket, "anybody?", nobody), 8);
    const HookedCall queue(SystemCall::Recvmsg, [](const Call& call) {
        return IsFromQueue(call) ? call.Fail(EAGAIN) : call.Make();
    });
    EXPECT_EQ(ReadyFor(socket), "rw");
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
}

TEST_F(ReportsOfTheNetwork, AreToldOnceEachAndByKind) {
    const OwnedSocket socket = NewNonBlocking();
    const Report& noPort = Reports[0];
    const Report& hops = Reports[3];
    const ToldReports reports({hops, noPort, hops, noPort, noPort});
    for (const int answer : {10054, 10054, 10054, 10052, 10052}) {
        EXPECT_TRUE(FailsWith(answer, TryReceive(socket)));
    }
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
}

TEST_F(ReportsOfTheNetwork, AreReadableWhateverTheirKind) {
    const OwnedSocket socket = NewNonBlocking();
    const ToldReports reports({Reports[3], Reports[3]});
    EXPECT_EQ(ReadyFor(socket), "w");
    EXPECT_TRUE(FailsWith(10052, TryReceive(socket)));
    EXPECT_EQ(ReadyFor(socket), "rw");
    EXPECT_TRUE(FailsWith(10052, TryReceive(socket)));
    EXPECT_EQ(ReadyFor(socket), "w");
}

TEST_F(ReportsOfTheNetwork, AreNotForTheNextSocketOfThatNumber) {
    for (const Report* report : {&Reports[0], &Reports[3]}) {
        OwnedSocket former = NewNonBlocking();
        const Winsock::Handle number = former.Get();
        {
            const ToldReports reports({*report, *report});
            EXPECT_TRUE(FailsWith(report->answer, TryReceive(former)));
        }
        EXPECT_EQ(ReadyFor(former), "rw");
        former.Close();
        const OwnedSocket socket = NewNonBlocking();
        ASSERT_EQ(socket.Get(), number);
        EXPECT_EQ(ReadyFor(socket), "w");
        EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
    }
}

// More than can be counted are as many as can.
TEST_F(ReportsOfTheNetwork, AreNotForgottenForBeingMany) {
    for (const Report* report : {&Reports[0], &Reports[3]}) {
        const OwnedSocket socket = NewNonBlocking();
        const ToldReports reports(std::deque<Report>(65'536, *report));
        EXPECT_TRUE(FailsWith(report->answer, TryReceive(socket)));
        EXPECT_TRUE(FailsWith(report->answer, TryReceive(socket)));
    }
}

}  // namespace
}  // namespace Conformance

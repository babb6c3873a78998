// What the daemons of the system's log get, from a socket that stands for theirs.
#include <VelLogging/DaemonSinks.h>
#include <gtest/gtest.h>
#include <logging/SampleRecords.h>
#include <support/TemporaryFolder.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace VelLoggingTests {
namespace {

using VelLogging::DaemonOptions;
using VelLogging::Format;
using VelLogging::JournalSink;
using VelLogging::SyslogSink;

class DaemonSink : public testing::Test {
protected:
    DaemonSink() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        Listen();
    }
    ~DaemonSink() override { ::close(socket_); }

    DaemonOptions Options() const { return {"program", path_}; }
    static std::string Process() { return std::to_string(::getpid()); }
    static std::string Thread() { return std::to_string(VelLogging::CurrentWriter().thread); }

    void Listen() {
        socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, path_.c_str());
        ASSERT_EQ(::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    void StopListening() {
        ::close(socket_);
        ::unlink(path_.c_str());
    }

    // The next datagram, or what is in the file that it passes; "nothing" if there is none.
    std::string Next() const {
        static char bytes[1 << 20];
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
        iovec part = {bytes, sizeof bytes};
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t count = ::recvmsg(socket_, &message, 0);
        if (count < 0) return "nothing";
        const cmsghdr* const header = CMSG_FIRSTHDR(&message);
        if (header == nullptr) return {bytes, static_cast<std::size_t>(count)};
        int file = -1;
        std::memcpy(&file, CMSG_DATA(header), sizeof file);
        return ContentsOf(file);
    }

private:
    static std::string ContentsOf(int file) {
        std::string contents(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
        const ssize_t count = ::pread(file, contents.data(), contents.size(), 0);
        const bool isSealed = ::write(file, "x", 1) < 0;
        ::close(file);
        return isSealed && count == static_cast<ssize_t>(contents.size()) ? contents : "broken";
    }

    const Support::TemporaryFolder folder_;
    const std::string path_ = (folder_.Path() / "socket").string();
    int socket_ = -1;
};

TEST_F(DaemonSink, SyslogGetsPriorityTimeTagAndLine) {
    SyslogSink sink(Options());
    sink.Write(SampleRecord(u"Sent 5 bytes", 17));
    EXPECT_EQ(Next(), "<15>Nov 22 13:01:02 program[" + Process() +
                          "]: 2026-11-22T13:01:02.123456Z [" + Process() + ":" + Thread() +
                          "] #17 Network/Packet Trace: Sent 5 bytes");
}

TEST_F(DaemonSink, SyslogHasTheSeverityOfTheCategoryAndTheFacility) {
    SyslogSink sink(Options(), Format::Plain, SyslogSink::FacilityLocal0 + 7);
    const auto head = [&](const char* category) {
        sink.Write(SampleRecord(u"x", 0, category));
        return Next().substr(0, 6);
    };
    EXPECT_EQ(head("Error"), "<187>N");
    EXPECT_EQ(head("Connection Trace"), "<190>N");
    EXPECT_EQ(head("Verbose Packet Trace"), "<191>N");
}

TEST_F(DaemonSink, ALongLineIsCutBetweenCharactersForSyslog) {
    SyslogSink sink(Options(), Format::Plain);
    sink.Write(SampleRecord(u'x' + std::u16string(10'000, u'\xE9')));
    const std::string datagram = Next();
    const std::string line = datagram.substr(datagram.find("]: ") + 3);
    // The head and the first character have 51 bytes, and each other one two.
    EXPECT_EQ(line.size(), SyslogSink::LongestLine - 1);
    EXPECT_EQ(line.substr(line.size() - 2), "\xC3\xA9");
}

TEST_F(DaemonSink, TheJournalGetsFields) {
    JournalSink sink(Options());
    sink.Write(SampleRecord(u"Sent \xE9", 17));
    EXPECT_EQ(Next(),
              "MESSAGE=Sent \xC3\xA9\nPRIORITY=7\nSYSLOG_IDENTIFIER=program\nTID=" + Thread() +
                  "\nVELSOCK_ROUTER=Network\nVELSOCK_CATEGORY=Packet Trace\n"
                  "VELSOCK_TIME=2026-11-22T13:01:02.123456Z\nVELSOCK_CONNECTION=17\n");
    sink.Write(SampleRecord(u"x", 0, "Error"));
    EXPECT_EQ(Next(), "MESSAGE=x\nPRIORITY=3\nSYSLOG_IDENTIFIER=program\nTID=" + Thread() +
                          "\nVELSOCK_ROUTER=Network\nVELSOCK_CATEGORY=Error\n"
                          "VELSOCK_TIME=2026-11-22T13:01:02.123456Z\n");
}

TEST_F(DaemonSink, AFieldWithALineFeedHasItsLength) {
    JournalSink sink(Options());
    sink.Write(SampleRecord(u"a\nPRIORITY=0"));
    EXPECT_EQ(Next().substr(0, 40),
              std::string("MESSAGE\n\x0C\0\0\0\0\0\0\0a\nPRIORITY=0\n", 29) + "PRIORITY=7\n");
}

TEST_F(DaemonSink, WhatIsTooLongForADatagramGoesAsASealedFile) {
    JournalSink sink(Options());
    sink.Write(SampleRecord(std::u16string(900'000, u'x')));
    const std::string fields = Next();
    EXPECT_EQ(fields.substr(0, 10), "MESSAGE=xx");
    EXPECT_EQ(fields.find("\nPRIORITY=7\n"), 8U + 900'000U);
    EXPECT_EQ(sink.Lost(), 0U);
}

TEST_F(DaemonSink, ADaemonThatIsDownLosesRecordsUntilItIsUp) {
    SyslogSink syslog(Options());
    JournalSink journal(Options());
    StopListening();
    syslog.Write(SampleRecord(u"lost"));
    journal.Write(SampleRecord(u"lost"));
    EXPECT_EQ(syslog.Lost(), 1U);
    EXPECT_EQ(journal.Lost(), 1U);
    Listen();
    journal.Write(SampleRecord(u"kept"));
    EXPECT_EQ(Next().substr(0, 13), "MESSAGE=kept\n");
    EXPECT_EQ(journal.Lost(), 1U);
}

TEST_F(DaemonSink, ADaemonThatReadsNothingHoldsUpNobody) {
    SyslogSink sink(Options());
    for (int count = 0; count < 5000; ++count)
        sink.Write(SampleRecord(u"x"));
    EXPECT_GT(sink.Lost(), 0U);
}

TEST_F(DaemonSink, APathThatNoSocketCanHaveLosesTheRecord) {
    JournalSink sink({"program", std::string(500, 'x')});
    sink.Write(SampleRecord(u"x"));
    EXPECT_EQ(sink.Lost(), 1U);
}

TEST(DaemonSinkOfWindows, TheDebuggerIsRefused) {
    EXPECT_THROW(VelLogging::DebuggerSink{}, std::runtime_error);
}

}  // namespace
}  // namespace VelLoggingTests

// Texts that set logging up, and those that cannot.
#include <VelLog/LogControl.h>
#include <VelLogging/Configure.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>
#include <gtest/gtest.h>
#include <logging/SampleRecords.h>
#include <support/TemporaryFolder.h>

#include <filesystem>

namespace VelLoggingTests {
namespace {

using VelLogging::ConfigurationError;
using VelLogging::Configure;
using VelLogging::Logging;

class ConfigureText : public testing::Test {
protected:
    ~ConfigureText() override { Configure("*/*=off"); }

    // Which routers write, as letters: Error, Connection, Packet, Verbose.
    static std::string Written(const Logging& logging) {
        const std::string before = logging.Ring()->Lines();
        Exchange();
        const std::string lines = logging.Ring()->Lines().substr(before.size());
        std::string letters;
        for (const char* category :
             {"Error", "Connection Trace", "Packet Trace", "Verbose Packet Trace"})
            if (lines.find(std::string("/") + category) != std::string::npos)
                letters += category[0];
        return letters;
    }

private:
    static VelBase::ReturnPtrI<VelNet::Socket> Socket() {
        return VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    }

    // Two records with the same text would do as well: one of each kind.
    static void Exchange() {
        const VelNet::SocketInitialization layer;
        const auto listener = Socket();
        listener->Bind(VelNet::Octets(127, 0, 0, 1), 0);
        listener->Listen();
        const auto client = Socket();
        client->Connect(VelNet::Octets(127, 0, 0, 1), listener->GetLocalAddress().GetPort());
        client->Send("A", 1);
        client->Close();
        try {
            client->Listen();
        } catch (...) {
            return;
        }
    }
};

TEST_F(ConfigureText, RoutersAreSwitchedFromLeftToRight) {
    EXPECT_EQ(Written(Configure("Network/Error=on,ring")), "E");
    EXPECT_EQ(Written(Configure("*/*=off,Network/*=on,Network/*Trace=off,ring")), "E");
    EXPECT_EQ(Written(Configure("Network/*Trace=off,Network/*=on", "ring:64K")), "ECPV");
    EXPECT_EQ(Written(Configure(" Network / * = off , Net*/?acket Trace = on , ring ")), "P");
    EXPECT_EQ(Written(Configure("ring")), "P");
}

TEST_F(ConfigureText, TheSinkEndsWithItsScope) {
    {
        const Logging logging = Configure("Network/*=on,ring");
        EXPECT_EQ(Written(logging), "ECPV");
    }
    EXPECT_EQ(VelLog::SetSink(nullptr), nullptr);
}

TEST_F(ConfigureText, AnotherTextTakesThePlaceOfTheFirst) {
    Logging logging = Configure("Network/*=on,ring");
    logging = Configure("Network/*Trace=off,ring");
    EXPECT_EQ(Written(logging), "E");
}

TEST_F(ConfigureText, SeveralSinksGetTheSameRecords) {
    const Support::TemporaryFolder folder;
    const std::string path = (folder.Path() / "a,b;c").string();
    std::string twice;
    for (const char character : path)
        twice += std::string(character == ',' || character == ';' ? 2 : 1, character);
    const Logging logging = Configure(
        "Network/Error=on", "file:" + twice + ";size=1M;keep=2;format=json , ring;format=json");
    EXPECT_EQ(Written(logging), "");
    EXPECT_NE(logging.Ring()->Lines().find("\"category\":\"Error\""), std::string::npos);
    EXPECT_EQ(Support::ContentsOf(path), logging.Ring()->Lines());
    EXPECT_EQ(logging.Lost(), 0U);
}

struct Mistake {
    const char* text;
    std::size_t position;
    const char* why;
};

constexpr char NoRouter[] =
    "there is no router \"Network/Eror\"; there are Network/Error, Network/Connection Trace, "
    "Network/Packet Trace, Network/Verbose Packet Trace";

TEST_F(ConfigureText, MistakesAreToldWithPlaceAndWhatThereIs) {
    const Mistake mistakes[] = {
        {"ring, Network/Eror=on", 7, NoRouter},
        {"Network/Error=yes", 15, "\"yes\" is neither \"on\" nor \"off\""},
        {"Network/Error", 1,
         "\"Network/Error\" is neither ROUTER/CATEGORY=on or off nor a sink; sinks are stderr, "
         "file, syslog, journal, debugger, ring"},
        {"printer", 1,
         "\"printer\" is neither ROUTER/CATEGORY=on or off nor a sink; sinks are stderr, file, "
         "syslog, journal, debugger, ring"},
        {"ring,", 6, "there is nothing before the comma or end"},
        {"file", 1, "\"file\" needs a path: file:PATH"},
        {"stderr:x", 1, "\"stderr\" takes nothing behind a colon"},
        {"ring;size=1", 6, "\"size=1\" is no option of \"ring\"; options are format=, queue="},
        {"ring;format queue=1", 6,
         "\"format queue=1\" is no option of \"ring\"; options are format=, queue="},
        {"ring;format", 6, "\"format\" is no option of \"ring\"; options are format=, queue="},
        {"ring;format=xml", 13, "there is no format \"xml\"; there are plain, text, logfmt, json"},
        {"file:x;size=0", 13, "\"0\" is no number from 1, with K, M or G behind it or without"},
        {"file:x;size=99999999999G", 13,
         "\"99999999999G\" is no number from 1, with K, M or G behind it or without"},
        {"file:x;keep=-1", 13, "\"-1\" is no count from 0 to 1000000"},
        {"syslog;facility=local8", 17,
         "there is no facility \"local8\"; there are user, daemon, local0 to local7"},
        {"file:a,,b;;c;lock=1", 14,
         "\"lock=1\" is no option of \"file\"; options are format=, keep=, queue=, size="},
        {"ring\n;size=1", 7, "\"size=1\" is no option of \"ring\"; options are format=, queue="},
        {"ring,ring", 6, "there is another ring already"},
    };
    for (const Mistake& mistake : mistakes) {
        try {
            Configure(mistake.text);
            ADD_FAILURE() << mistake.text;
        } catch (const ConfigurationError& failure) {
            EXPECT_EQ(std::string(failure.what()),
                      std::string("log configuration \"") + mistake.text + "\", character " +
                          std::to_string(mistake.position) + ": " + mistake.why);
            EXPECT_EQ(failure.Position(), mistake.position);
        }
    }
}

TEST_F(ConfigureText, ASinkThatTheSystemRefusesIsToldApart) {
    const Support::TemporaryFolder folder;
    const std::string path = (folder.Path() / "none" / "log").string();
    EXPECT_THROW(Configure("file:" + path), VelLogging::SinkError);
    try {
        Configure("ring,ring");
        ADD_FAILURE();
    } catch (const ConfigurationError& failure) {
        EXPECT_EQ(dynamic_cast<const VelLogging::SinkError*>(&failure), nullptr);
    }
}

TEST_F(ConfigureText, AMistakeChangesNothing) {
    const Support::TemporaryFolder folder;
    const std::string path = (folder.Path() / "log").string();
    const Logging logging = Configure("Network/Error=on,ring");
    EXPECT_THROW(Configure("Network/*=on,file:" + path, "Network/*=maybe"), ConfigurationError);
    EXPECT_EQ(Written(logging), "E");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ConfigureText, WithoutTheVariableNothingIsChanged) {
    const Logging logging = Configure("Network/Error=on,ring");
    const Logging none = VelLogging::ConfigureFromEnvironment("VELSOCK_TEST_NO_SUCH_VARIABLE");
    EXPECT_EQ(Written(logging), "E");
    const Logging other =
        VelLogging::ConfigureFromEnvironment("VELSOCK_TEST_NO_SUCH_VARIABLE", "Network/*=on,ring");
    EXPECT_EQ(Written(other), "ECPV");
}

}  // namespace
}  // namespace VelLoggingTests

// SocketAddress::ConvertDottedStringToOctets.
#include "SocketTrials.h"

namespace SocketTests {
namespace {

class DottedText : public SocketTest {
protected:
    static std::string Convert(const char* text) {
        return SocketAddress::ConvertDottedStringToOctets(text).GetAddressString().c_str();
    }

    static Caught FailToConvert(const char* text) {
        return Catch([&] { SocketAddress::ConvertDottedStringToOctets(text); });
    }

    static std::u16string NotDotted(const std::u16string& text) {
        return u"VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter "
               u"is not an Internet Protocol dotted address: " +
               text;
    }
};

TEST_F(DottedText, MakesOneSystemCallAndNothingElse) {
    EXPECT_EQ(Convert("10.1.2.3"), "10.1.2.3");
    EXPECT_EQ(Transcript(), Lines{"inet_addr(\"10.1.2.3\")"});
}

TEST_F(DottedText, SystemsAnswerIsReadInMemoryOrder) {
    // 254.128.1.127 as it stands in memory; the machines that the library runs on have the lowest
    // byte first.
    On::InetAddr().Returns(0x7F0180FE);
    EXPECT_EQ(Convert("whatever the system takes"), "254.128.1.127");
}

TEST_F(DottedText, ZeroIsNoFailure) {
    EXPECT_EQ(Convert("0.0.0.0"), "0.0.0.0");
    ExpectRecords({});
}

TEST_F(DottedText, NeighboursOfTheBroadcastAddressAreConverted) {
    for (const char* const text :
         {"255.255.255.254", "254.255.255.255", "255.255.0.255", "127.255.255.255"})
        EXPECT_EQ(Convert(text), text);
}

TEST_F(DottedText, AnyOtherTextIsToldWithItselfAndWithoutANumber) {
    SetLastError(10014);
    EXPECT_EQ(FailToConvert("server.example"), (Caught{true, NotDotted(u"server.example"), -1}));
    EXPECT_EQ(TranscriptWithRecordsShortened(),
              (Lines{"inet_addr(\"server.example\")", "LogMessage"}));
    ExpectRecords({FailureRecord(NotDotted(u"server.example"))});
}

TEST_F(DottedText, FailureIsNotLoggedWhileErrorIsOff) {
    SetRouterFlag(ErrorCategory, 0);
    EXPECT_EQ(FailToConvert("x"), (Caught{true, NotDotted(u"x"), -1}));
    EXPECT_EQ(Transcript(), Lines{"inet_addr(\"x\")"});
    EXPECT_EQ(FormatterRequests(), 0);
}

// Required: the system answers it with the value that stands for a failure.
TEST_F(DottedText, BroadcastAddressIsRejected) {
    EXPECT_EQ(FailToConvert("255.255.255.255"), (Caught{true, NotDotted(u"255.255.255.255"), -1}));
    ExpectRecords({FailureRecord(NotDotted(u"255.255.255.255"))});
}

TEST_F(DottedText, LastErrorPlaysNoPart) {
    for (const int number : ErrorNumbers()) {
        SCOPED_TRACE(number);
        On::InetAddr().Fails(number);
        EXPECT_EQ(FailToConvert("10.1.2.3"), (Caught{true, NotDotted(u"10.1.2.3"), -1}));
    }
    EXPECT_EQ(CountOf("WSAGetLastError"), 0);
}

TEST_F(DottedText, EmptyAndNullTextsAreToldAsNothing) {
    EXPECT_EQ(FailToConvert(""), (Caught{true, NotDotted(u""), -1}));
    EXPECT_EQ(FailToConvert(nullptr), (Caught{true, NotDotted(u""), -1}));
    EXPECT_EQ(TranscriptWithout({"LogMessage"}), (Lines{"inet_addr(\"\")", "inet_addr(null)"}));
}

TEST_F(DottedText, FailureShowsTheTextConvertedFromUtf8) {
    EXPECT_EQ(FailToConvert("\xC3\xA9\xF0\x9F\x98\x80\xFF.").text,
              NotDotted(u"\u00E9\U0001F600\uFFFD."));
}

TEST_F(DottedText, FailureWithALongTextIsCutInTheExceptionAlone) {
    const std::string text(5000, '1');
    const std::u16string whole = NotDotted(std::u16string(5000, u'1'));
    EXPECT_EQ(FailToConvert(text.c_str()), (Caught{true, whole.substr(0, 2999), -1}));
    EXPECT_EQ(LastEventOf("inet_addr").bytes, text);
    ExpectRecords({FailureRecord(whole)});
}

TEST_F(DottedText, DoesNotStartTheLayer) {
    BringLayerDown();
    ClearTranscript();
    EXPECT_EQ(Convert("10.1.2.3"), "10.1.2.3");
    EXPECT_EQ(FailToConvert("x"), (Caught{true, NotDotted(u"x"), -1}));
    EXPECT_EQ(Transcript(), (Lines{"inet_addr(\"10.1.2.3\")", "inet_addr(\"x\")"}));
}

TEST_F(DottedText, ExhaustedMemoryLeavesNothing) {
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [] { SocketAddress::ConvertDottedStringToOctets("10.1.2.3"); }); ++n)
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    EXPECT_GT(n, 1U);
    for (n = 1; RunsOutOfMemory(n, [] { FailToConvert("x"); }); ++n)
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    EXPECT_GT(n, 2U);
}

}  // namespace
}  // namespace SocketTests

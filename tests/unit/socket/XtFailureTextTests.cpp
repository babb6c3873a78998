// How a failure of the extended socket is told.
#include <Socket/SocketXtFailure.h>

#include <climits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtFailureText : public XtTest {};

Caught Throw(int error, const char* first = "", const char* second = "") {
    return Catch([&] {
        ThrowSocketXtError({"Some::Function", "it went wrong", "::x", error, first, second});
    });
}

TEST_F(XtFailureText, PartsStandBetweenCommas) {
    EXPECT_EQ(Throw(10061, "host1:0", "host2:80").text,
              u"Some::Function , it went wrong , ::x , host1:0 : host2:80 , errno = \u274D "
              u"Connection refused");
}

TEST_F(XtFailureText, WithoutAFirstAddressTheSecondIsDropped) {
    EXPECT_EQ(Throw(10061, "", "host2:80").text,
              u"Some::Function , it went wrong , ::x ,  , errno = \u274D Connection refused");
    EXPECT_EQ(Throw(10061).text,
              u"Some::Function , it went wrong , ::x ,  , errno = \u274D Connection refused");
}

TEST_F(XtFailureText, WithoutASecondAddressTheColonStays) {
    EXPECT_EQ(Throw(10061, "host1").text,
              u"Some::Function , it went wrong , ::x , host1 :  , errno = \u274D Connection "
              u"refused");
}

TEST_F(XtFailureText, NumberIsOneUnitOfItsLowBits) {
    EXPECT_EQ(Throw(65536 + 10061).text,
              u"Some::Function , it went wrong , ::x ,  , errno = \u274D Unknown error");
    EXPECT_EQ(Throw(-1).text,
              u"Some::Function , it went wrong , ::x ,  , errno = \uFFFF Unknown error");
    EXPECT_EQ(Throw(10000).text,
              u"Some::Function , it went wrong , ::x ,  , errno = \u2710 The function succeeded");
}

TEST_F(XtFailureText, NumberWithoutLowBitsEndsIt) {
    for (const int error : {0, 65536, INT_MIN}) {
        EXPECT_EQ(Throw(error, "a", "b").text,
                  u"Some::Function , it went wrong , ::x , a : b , errno = ");
        EXPECT_EQ(Throw(error).code, -1);
    }
}

TEST_F(XtFailureText, CodeIsTheOneOfTheNumber) {
    EXPECT_EQ(Throw(10061).code, 10061);
    EXPECT_EQ(Throw(43).code, 10043);
    EXPECT_EQ(Throw(-2).code, 1);
    EXPECT_EQ(Throw(10043).code, -1);
    for (const int error : ErrorNumbers())
        EXPECT_EQ(Throw(error).code, Exception::GetSocketError(error)) << error;
}

TEST_F(XtFailureText, EachPartIsConvertedFromTheCodePage) {
    Throw(10061, "h\xE9", "p\xE9");
    Lines parts;
    for (const Event& event : EventsOf("WideFromCodePage"))
        parts.push_back(event.bytes);
    EXPECT_EQ(parts, (Lines{"h\xE9", "p\xE9"})) << "ASCII needs no conversion";
    EXPECT_EQ(
        LoggedTexts(ErrorCategory)[0],
        u"Some::Function , it went wrong , ::x , h\u00E9 : p\u00E9 , errno = \u274D Connection "
        u"refused");
}

TEST_F(XtFailureText, IsLoggedBeforeItIsThrown) {
    const Caught caught = Throw(10061, "a", "b");
    EXPECT_TRUE(caught.thrown);
    EXPECT_EQ(SystemCalls(), Lines{"LogMessage"});
    ExpectRecords({FailureRecord(caught.text)});
}

TEST_F(XtFailureText, ReportIsLoggedAndNotThrown) {
    EXPECT_NO_THROW(ReportSocketXtError({"f", "d", "c", 10047, "no-ip", "no-port"}));
    ExpectRecords(
        {FailureRecord(u"f , d , c , no-ip : no-port , errno = \u273F Address family not "
                       u"supported by protocol family")});
}

TEST_F(XtFailureText, OnlyTheErrorRouterCounts) {
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        ClearTranscript();
        const int requestsBefore = FormatterRequests();
        EXPECT_EQ(Throw(10061), (XtFailure{"Some::Function", "it went wrong", "::x"}.With(10061)));
        ReportSocketXtError({"f", "d", "c", 10047});
        EXPECT_EQ(CountOf("LogMessage"), routers.error ? 2 : 0);
        EXPECT_EQ(FormatterRequests() - requestsBefore, routers.error ? 2 : 0);
    }
}

TEST_F(XtFailureText, ReportWithTheErrorRouterOffNeedsNoMemory) {
    SetRouterFlag(ErrorCategory, 0);
    const Allocations::Mark mark;
    ReportSocketXtError({"f", "d", "c", 10047, "no-ip", "no-port"});
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(XtFailureText, ReportThatCannotBeWrittenIsLost) {
    On::LogMessage().Throws(7);
    EXPECT_NO_THROW(ReportSocketXtError({"f", "d", "c", 10047}));
    const std::size_t failed = FailEveryAllocation([](std::size_t n) {
        const Starved starved = Starve(n, [] { ReportSocketXtError({"f", "d", "c", 10047}); });
        EXPECT_FALSE(starved.outOfMemory) << n;
        return starved.happened;
    });
    EXPECT_GE(failed, 1U);
}

TEST_F(XtFailureText, IsThrownWhileTheLayerIsDown) {
    BringLayerDown();
    EXPECT_EQ(Throw(10061).code, 10061);
    EXPECT_NO_THROW(ReportSocketXtError({"f", "d", "c", 10047}));
    EXPECT_EQ(FormatterRequests(), 0);
}

// An exception holds 2,999 units.
TEST_F(XtFailureText, LongTextIsCutInTheExceptionAloneAndWholeInTheLog) {
    const std::string host(4000, 'h');
    const Caught caught = Throw(10061, host.c_str(), "80");
    EXPECT_EQ(caught.text.size(), 2999U);
    const std::u16string logged = LoggedTexts(ErrorCategory)[0];
    EXPECT_EQ(logged,
              (XtFailure{"Some::Function", "it went wrong", "::x", host, "80"}.With(10061).text));
    EXPECT_EQ(logged.substr(0, 2999), caught.text);
}

}  // namespace
}  // namespace SocketTests

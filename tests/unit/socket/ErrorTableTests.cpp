#include <Socket/ErrorTable.h>
#include <VelNet/Exception.h>
#include <gtest/gtest.h>

#include <climits>
#include <iterator>
#include <set>
#include <thread>
#include <vector>

#include "ErrorTableExpectations.h"
#include "scripted/ScriptedPlatform.h"

namespace FoundationTests {
namespace {

using namespace VelNet;
using Scripted::Text;

class ErrorTableLookUp : public Scripted::PlatformTest {};

// All numbers of both signs that a look-up could take for one of the table's: the whole range of 16
// bits and beyond, and the ends of the 32.
std::vector<int> ManyNumbers() {
    std::vector<int> numbers = Scripted::ErrorNumbers();
    for (int number = -70000; number <= 70000; ++number)
        numbers.push_back(number);
    for (const ExpectedErrorRow& row : ExpectedErrorTable) {
        numbers.push_back(row.key + 0x10000);
        numbers.push_back(row.key - 0x10000);
        numbers.push_back(row.key ^ INT_MIN);
    }
    return numbers;
}

TEST(ErrorTable, HasFiftySixRowsAndTheTerminatingOne) {
    EXPECT_EQ(std::size(ErrorTable), 57U);
    EXPECT_EQ(ErrorTableEndKey, -1);
}

TEST(ErrorTable, EveryCellIsAsRequired) {
    ASSERT_EQ(std::size(ErrorTable), ExpectedErrorTable.size());
    for (std::size_t index = 0; index < ExpectedErrorTable.size(); ++index) {
        const ErrorTableRow& row = ErrorTable[index];
        const ExpectedErrorRow& expected = ExpectedErrorTable[index];
        EXPECT_EQ(row.bsdErrno, expected.bsdErrno) << "row " << index;
        EXPECT_EQ(row.aixErrno, expected.aixErrno) << "row " << index;
        EXPECT_EQ(row.hpuxErrno, expected.hpuxErrno) << "row " << index;
        EXPECT_EQ(row.solarisErrno, expected.solarisErrno) << "row " << index;
        EXPECT_EQ(row.linuxErrno, expected.linuxErrno) << "row " << index;
        EXPECT_EQ(row.winsockKey, expected.key) << "row " << index;
        EXPECT_EQ(row.code, expected.code) << "row " << index;
        EXPECT_EQ(Text(row.text), expected.text) << "row " << index;
    }
}

TEST(ErrorTable, IsConstantData) {
    static_assert(ErrorTable[TerminatingRow].winsockKey == ErrorTableEndKey);
    static_assert(std::is_const_v<std::remove_reference_t<decltype(ErrorTable[0])>>);
    EXPECT_EQ(ErrorTable[TerminatingRow].code, SOCKET_ERR_UNKNOWN);
}

TEST(ErrorTable, CodesAreTheNumbersThatClientsCompileAgainst) {
    const std::vector<std::pair<SOCKET_ERR, int>> codes = {
        {SOCKET_ERR_UNKNOWN, -1},           {SOCKET_ERR_NOT_PERMITTED, 1},
        {SOCKET_ERR_READ_ONLY, 2},          {SOCKET_ERR_NO_ENTRY, 3},
        {SOCKET_ERR_NO_SPACE, 4},           {SOCKET_ERR_NOT_DIRECTORY, 5},
        {SOCKET_ERR_SUCCESS, 10000},        {SOCKET_ERR_INTR, 10004},
        {SOCKET_ERR_BADF, 10009},           {SOCKET_ERR_ACCES, 10013},
        {SOCKET_ERR_FAULT, 10014},          {SOCKET_ERR_INVAL, 10022},
        {SOCKET_ERR_MFILE, 10024},          {SOCKET_ERR_WOULDBLOCK, 10035},
        {SOCKET_ERR_INPROGRESS, 10036},     {SOCKET_ERR_ALREADY, 10037},
        {SOCKET_ERR_NOTSOCK, 10038},        {SOCKET_ERR_DESTADDRREQ, 10039},
        {SOCKET_ERR_MSGSIZE, 10040},        {SOCKET_ERR_PROTOTYPE, 10041},
        {SOCKET_ERR_NOPROTOOPT, 10042},     {SOCKET_ERR_PROTONOSUPPORT, 10043},
        {SOCKET_ERR_SOCKTNOSUPPORT, 10044}, {SOCKET_ERR_OPNOTSUPP, 10045},
        {SOCKET_ERR_PFNOSUPPORT, 10046},    {SOCKET_ERR_AFNOSUPPORT, 10047},
        {SOCKET_ERR_ADDRINUSE, 10048},      {SOCKET_ERR_ADDRNOTAVAIL, 10049},
        {SOCKET_ERR_NETDOWN, 10050},        {SOCKET_ERR_NETUNREACH, 10051},
        {SOCKET_ERR_NETRESET, 10052},       {SOCKET_ERR_CONNABORTED, 10053},
        {SOCKET_ERR_CONNRESET, 10054},      {SOCKET_ERR_NOBUFS, 10055},
        {SOCKET_ERR_ISCONN, 10056},         {SOCKET_ERR_NOTCONN, 10057},
        {SOCKET_ERR_SHUTDOWN, 10058},       {SOCKET_ERR_TOOMANYREFS, 10059},
        {SOCKET_ERR_TIMEDOUT, 10060},       {SOCKET_ERR_CONNREFUSED, 10061},
        {SOCKET_ERR_LOOP, 10062},           {SOCKET_ERR_NAMETOOLONG, 10063},
        {SOCKET_ERR_HOSTDOWN, 10064},       {SOCKET_ERR_HOSTUNREACH, 10065},
        {SOCKET_ERR_NOTEMPTY, 10066},       {SOCKET_ERR_PROCLIM, 10067},
        {SOCKET_ERR_USERS, 10068},          {SOCKET_ERR_DQUOT, 10069},
        {SOCKET_ERR_STALE, 10070},          {SOCKET_ERR_REMOTE, 10071},
        {SOCKET_ERR_SYSNOTREADY, 10091},    {SOCKET_ERR_VERNOTSUPPORTED, 10092},
        {SOCKET_ERR_NOTINITIALISED, 10093}, {SOCKET_ERR_HOST_NOT_FOUND, 11001},
        {SOCKET_ERR_TRY_AGAIN, 11002},      {SOCKET_ERR_NO_RECOVERY, 11003},
        {SOCKET_ERR_NO_DATA, 11004},
    };
    std::set<int> named;
    for (const auto& [code, number] : codes) {
        EXPECT_EQ(code, number);
        named.insert(number);
    }
    std::set<int> required;
    for (const ExpectedErrorRow& row : ExpectedErrorTable)
        required.insert(row.code);
    EXPECT_EQ(named, required);
}

TEST_F(ErrorTableLookUp, EveryNumberGivesItsRowsCode) {
    for (const int number : ManyNumbers())
        ASSERT_EQ(Exception::GetSocketError(number), ExpectedRow(number).code) << number;
}

TEST_F(ErrorTableLookUp, EveryNumberGivesItsRowsText) {
    for (const int number : ManyNumbers())
        ASSERT_EQ(Text(Exception::GetErrorString(number)), ExpectedRow(number).text) << number;
}

TEST_F(ErrorTableLookUp, NumbersWithoutTheOffsetAreTheOnesThatAreKnown) {
    EXPECT_EQ(Exception::GetSocketError(43), 10043);
    EXPECT_EQ(Text(Exception::GetErrorString(43)), u"Protocol not supported");
    EXPECT_EQ(Exception::GetSocketError(44), 10044);
    EXPECT_EQ(Text(Exception::GetErrorString(44)), u"Socket type not supported");
    EXPECT_EQ(Exception::GetSocketError(92), 10092);
    EXPECT_EQ(Text(Exception::GetErrorString(92)), u"WINSOCK.DLL version out of range");
    for (const int number : {10043, 10044, 10092}) {
        EXPECT_EQ(Exception::GetSocketError(number), -1) << number;
        EXPECT_EQ(Text(Exception::GetErrorString(number)), u"Unknown error") << number;
    }
}

TEST_F(ErrorTableLookUp, SuccessIsKnownAsTenThousandOnly) {
    EXPECT_EQ(Exception::GetSocketError(10000), 10000);
    EXPECT_EQ(Text(Exception::GetErrorString(10000)), u"The function succeeded");
    EXPECT_EQ(Exception::GetSocketError(0), -1);
    EXPECT_EQ(Text(Exception::GetErrorString(0)), u"Unknown error");
}

TEST_F(ErrorTableLookUp, MinusTwoGivesTheFirstOfItsFiveRows) {
    EXPECT_EQ(Exception::GetSocketError(-2), 1);
    EXPECT_EQ(Text(Exception::GetErrorString(-2)), u"Operation not permitted");
}

TEST_F(ErrorTableLookUp, MinusOneIsUnknown) {
    EXPECT_EQ(Exception::GetSocketError(-1), -1);
    EXPECT_EQ(Text(Exception::GetErrorString(-1)), u"Unknown error");
}

TEST_F(ErrorTableLookUp, CodesOfTheShadowedRowsAreNeverGiven) {
    const std::set<int> shadowed = {2, 3, 4, 5};
    for (const int number : ManyNumbers())
        ASSERT_EQ(shadowed.count(Exception::GetSocketError(number)), 0U) << number;
}

TEST_F(ErrorTableLookUp, ForeignErrnoColumnsAreNotLookedUp) {
    for (const ExpectedErrorRow& row : ExpectedErrorTable) {
        if (ExpectedRow(row.linuxErrno).key != -1) continue;  // another row's key
        EXPECT_EQ(Exception::GetSocketError(row.linuxErrno), -1) << row.linuxErrno;
    }
    EXPECT_EQ(Exception::GetSocketError(111), -1);
    EXPECT_EQ(Exception::GetSocketError(13), -1);
}

TEST_F(ErrorTableLookUp, TextsAreStaticAndNothingIsAllocated) {
    const std::vector<int> numbers = Scripted::ErrorNumbers();
    const Scripted::Allocations::Mark mark;
    for (const int number : numbers) {
        const unsigned short* const text = Exception::GetErrorString(number);
        ASSERT_NE(text, nullptr) << number;
        EXPECT_EQ(text, Exception::GetErrorString(number)) << number;
    }
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(Exception::GetErrorString(0), Exception::GetErrorString(INT_MAX));
}

TEST_F(ErrorTableLookUp, AsksThePlatformNothingAndKeepsTheLastError) {
    Scripted::SetLastError(10061);
    EXPECT_EQ(Exception::GetSocketError(10013), SOCKET_ERR_ACCES);
    EXPECT_EQ(Text(Exception::GetErrorString(10013)), u"Permission denied");
    EXPECT_EQ(Scripted::LastError(), 10061);
    EXPECT_EQ(Scripted::Transcript(), std::vector<std::string>());
}

TEST_F(ErrorTableLookUp, ThreadsLookUpAtOnce) {
    const std::vector<int> numbers = Scripted::ErrorNumbers();
    std::vector<int> wrong(4, 0);
    std::vector<std::thread> threads;
    for (int& misses : wrong)
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round)
                for (const int number : numbers)
                    misses += Exception::GetSocketError(number) != ExpectedRow(number).code;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace FoundationTests

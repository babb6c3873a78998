// This computer's name when the system does not tell it.
#include <Platform/System.h>

#include <cerrno>
#include <cstring>

#include "conformance/NameScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

// The system's name is that, and what has no room for it is cut without a terminator.
Hook NamedWithoutTerminator(const std::string& name) {
    return [name](const Call& call) {
        std::strncpy(call.Pointer<char>(0), name.c_str(),
                     static_cast<std::size_t>(call.Argument(1)));
        return Word{0};
    };
}

struct NameFault {
    int systemError;
    int winsockError;

    friend void PrintTo(const NameFault& fault, std::ostream* stream) {
        *stream << std::strerror(fault.systemError);
    }
};

class OwnNameUntold : public Started, public testing::WithParamInterface<NameFault> {
protected:
    OwnNameUntold() : fails_(SystemCall::Gethostname, GetParam().systemError) {}

    static int Error() { return GetParam().winsockError; }

private:
    const FailingCall fails_;
};

TEST_P(OwnNameUntold, IsAFailureThatLeavesTheRoomAlone) {
    char name[300];
    std::memset(name, '#', sizeof name);
    EXPECT_TRUE(FailsWith(Error(), Winsock::gethostname(name, sizeof name)));
    EXPECT_EQ(std::string(name, sizeof name), std::string(sizeof name, '#'));
}

TEST_P(OwnNameUntold, HasNoAddresses) {
    List list;
    EXPECT_TRUE(Returns(Error(), Resolve("", "80", list)));
    EXPECT_EQ(list, nullptr);
    EXPECT_TRUE(FailsWith(Error(), Winsock::gethostbyname("")));
    EXPECT_TRUE(FailsWith(Error(), Winsock::gethostbyname(nullptr)));
}

TEST_P(OwnNameUntold, IsEmptyForWhoAsksForATextAlone) {
    EXPECT_EQ(System::ComputerName(), System::WideUnits{});
}

TEST_P(OwnNameUntold, DoesNotKeepOthersFromBeingFound) {
    EXPECT_EQ(AddressesOf(Resolved("10.1.2.3", "80")), Texts{"10.1.2.3 80"});
    EXPECT_NE(Winsock::gethostbyname("10.1.2.3"), nullptr);
    List list;
    EXPECT_TRUE(Returns(11001, Resolve("no..such", "80", list)));
    EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname("no..such")));
}

INSTANTIATE_TEST_SUITE_P(Rows, OwnNameUntold,
                         testing::Values(NameFault{EPERM, 10013}, NameFault{EFAULT, 10014},
                                         NameFault{ENAMETOOLONG, 10014}, NameFault{EINVAL, 10022},
                                         NameFault{ENOSYS, 10045}, NameFault{ENOMEM, 10055}));

using OwnNameOfManyLetters = Started;

TEST_F(OwnNameOfManyLetters, IsToldWhole) {
    const std::string longest(254, 'n');
    const HookedCall named(SystemCall::Gethostname, NamedWithoutTerminator(longest));
    char name[300];
    ASSERT_TRUE(Succeeds(Winsock::gethostname(name, sizeof name)));
    EXPECT_EQ(name, longest);
    EXPECT_EQ(System::ComputerName(), System::WideUnits(254, 'n'));
}

TEST_F(OwnNameOfManyLetters, IsNeverToldInPart) {
    for (const char letter : {'n', '\xC3'}) {
        const HookedCall named(SystemCall::Gethostname,
                               NamedWithoutTerminator(std::string(600, letter)));
        char name[1000] = "#";
        EXPECT_TRUE(FailsWith(10014, Winsock::gethostname(name, sizeof name)));
        EXPECT_STREQ(name, "#");
        EXPECT_EQ(System::ComputerName(), System::WideUnits{});
    }
}

using OwnNameAndOthers = Started;

TEST_F(OwnNameAndOthers, AreFoundWithoutAskingForTheOwn) {
    const CountedCall asked(SystemCall::Gethostname);
    EXPECT_NE(Winsock::gethostbyname("10.1.2.3"), nullptr);
    EXPECT_EQ(AddressesOf(Resolved("10.1.2.3", "80")), Texts{"10.1.2.3 80"});
    EXPECT_EQ(asked.Seen(), 0U);
}

}  // namespace
}  // namespace Conformance

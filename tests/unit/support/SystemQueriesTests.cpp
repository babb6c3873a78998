#include <VelBase/SystemQueries.h>

#include <type_traits>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using namespace Scripted;

static_assert(std::is_same_v<decltype(&VelBase::GetComputerName), VelBase::ReturnWString (*)()>);
static_assert(std::is_same_v<decltype(&VelBase::GetSystemErrorDescription),
                             VelBase::ReturnWString (*)(unsigned int)>);
static_assert(std::is_same_v<decltype(&VelBase::Sleep), void (*)(unsigned long)>);

class SystemQueries : public PlatformTest {};

TEST_F(SystemQueries, ComputerNameIsTheSystems) {
    On::ComputerName().Returns(u"RECHNER-\u00C4").Returns(u"");
    EXPECT_EQ(Text(VelBase::GetComputerName().c_str()), u"RECHNER-\u00C4");
    EXPECT_EQ(Text(VelBase::GetComputerName().c_str()), u"");
    EXPECT_EQ(CountOf("ComputerName"), 2);
}

TEST_F(SystemQueries, ErrorDescriptionIsTheSystemsTextForTheNumber) {
    On::ErrorDescription().Returns(u"Zugriff verweigert \u20AC");
    EXPECT_EQ(Text(VelBase::GetSystemErrorDescription(4294967295u).c_str()),
              u"Zugriff verweigert \u20AC");
    EXPECT_EQ(Transcript(), std::vector<std::string>{"ErrorDescription(4294967295)"});
}

TEST_F(SystemQueries, SleepAsksTheSystemOnceForThatLong) {
    VelBase::Sleep(2000);
    VelBase::Sleep(0);
    EXPECT_EQ(Transcript(), (std::vector<std::string>{"Sleep(2000)", "Sleep(0)"}));
}

TEST_F(SystemQueries, EveryFailingAllocationIsReported) {
    Support::ExpectBadAllocFromEveryAllocation(2, [] { VelBase::GetComputerName(); });
    Support::ExpectBadAllocFromEveryAllocation(2, [] { VelBase::GetSystemErrorDescription(5); });
}

}  // namespace

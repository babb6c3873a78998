#include <VelLog/Initializer.h>
#include <VelRegistry/Initializer.h>
#include <VelSynch/Initializer.h>

#include <type_traits>

#include "scripted/ScriptedPlatform.h"

namespace {

template <class Initializer>
constexpr bool MarksASpan =
    std::is_default_constructible_v<Initializer> && !std::is_copy_constructible_v<Initializer> &&
    !std::is_copy_assignable_v<Initializer> && !std::is_move_constructible_v<Initializer>;
static_assert(MarksASpan<VelSynch::Initializer>);
static_assert(MarksASpan<VelRegistry::Initializer>);
static_assert(MarksASpan<VelLog::Initializer>);

class Initializers : public Scripted::PlatformTest {};

TEST_F(Initializers, BringingTheLibrariesUpAsksNothingOfTheSystem) {
    const Scripted::Allocations::Mark mark;
    {
        const VelSynch::Initializer synch;
        const VelRegistry::Initializer registry;
        const VelLog::Initializer log;
        const VelLog::Initializer another;
    }
    EXPECT_EQ(mark.Requests(), 0u);
    EXPECT_EQ(Scripted::Transcript(), std::vector<std::string>{});
}

}  // namespace

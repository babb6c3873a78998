// Where Wine is known to answer otherwise than Windows: the whole list.
//
// The suite's expectations are Windows' answers. On Wine, and nowhere else, a situation that is
// named here may also end as the list says.
#pragma once

#include <string_view>

#include "support/Wine.h"

namespace Conformance {

using Support::RunsOnWine;

struct WineAnswer {
    std::string_view situation;
    long long result;
    int error;
};

// Whether the situation is listed with that outcome, and this is Wine. A situation that is not
// listed at all is a mistake of the test and reported as a failure.
bool IsWinesAnswer(std::string_view situation, long long result, int error);

// Notes what Windows answers and each listed answer where Wine gives now one, now the other, as
// time has it: what came this time would make another table each time. False in all other
// situations.
bool NotesVaryingAnswers(std::string_view situation);

// Whether this is Wine, and Wine waits for ever or crashes in the situation, or cannot bring it
// about: what follows is left out there.
bool WineGivesNoAnswer(std::string_view situation);

// Wine sets the last error to 0 after few of the calls that succeed.
bool LeavesLastErrorAfterSuccess();

}  // namespace Conformance

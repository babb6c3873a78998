// Wine, on which the tests run too, answers a few situations otherwise than Windows does.
#pragma once

namespace Support {

bool RunsOnWine() noexcept;

}  // namespace Support

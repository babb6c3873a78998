#include "support/Wine.h"

bool Support::RunsOnWine() noexcept {
    return false;
}

#include "conformance/WineAnswers.h"

bool Conformance::RunsOnWine() noexcept {
    return false;
}

#include "VelBase/LengthLimit.h"

#include <stdexcept>

namespace VelBase {

void RequireRoom(std::size_t length, std::size_t more, std::size_t maximum, const char* text) {
    if (more > maximum || length > maximum - more) throw std::length_error(text);
}

}  // namespace VelBase

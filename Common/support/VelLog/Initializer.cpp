#include "VelLog/Initializer.h"

namespace VelLog {

Initializer::Initializer() = default;
Initializer::~Initializer() = default;

}  // namespace VelLog

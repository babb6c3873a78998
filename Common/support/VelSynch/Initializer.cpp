#include "VelSynch/Initializer.h"

namespace VelSynch {

Initializer::Initializer() = default;
Initializer::~Initializer() = default;

}  // namespace VelSynch

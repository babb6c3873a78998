#include "VelRegistry/Initializer.h"

namespace VelRegistry {

Initializer::Initializer() = default;
Initializer::~Initializer() = default;

}  // namespace VelRegistry

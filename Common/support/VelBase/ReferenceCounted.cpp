#include "VelBase/ReferenceCounted.h"

namespace VelBase {

ReferenceCounted::~ReferenceCounted() = default;

}  // namespace VelBase

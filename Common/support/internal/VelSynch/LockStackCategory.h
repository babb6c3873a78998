// The position of a library's locks in the product's lock order.
#pragma once

namespace VelSynch {

// Any 32-bit value may be passed; the socket library uses one for all of its routers.
enum EnumOrrinLockStackCategory : int { LOCK_STACK_CATEGORY_NETWORK = -3 };

}  // namespace VelSynch

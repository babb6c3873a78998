// The interface of every object whose life ends with its last reference.
#pragma once

#include "VelBase/Export.h"

namespace VelBase {

// An abstract class without data. A new object has the count 0: whoever receives it first takes the
// first reference, normally by putting it into a ReturnPtrI. Counts are plain integers, so an
// object and all references to it belong to one thread at a time.
class VELSOCK_EXPORT ReferenceCounted {
public:
    virtual ~ReferenceCounted();

    // Adds one reference.
    virtual void AddRef() const = 0;

    // Drops one reference. The object is gone when that was the last one.
    virtual void Release() const = 0;

protected:
    ReferenceCounted() = default;
    ReferenceCounted(const ReferenceCounted&) = default;
    ReferenceCounted& operator=(const ReferenceCounted&) = default;
};

}  // namespace VelBase

// The interface of all reference-counted objects.
#pragma once

#include "VelBase/Export.h"

namespace VelBase {

// An object that is destroyed when its last reference is released. A new object has the count 0:
// whoever receives it first takes the first reference, normally by putting it into a ReturnPtrI.
// Counts are plain integers, so an object and all references to it belong to one thread at a time.
class VELSOCK_EXPORT ReferenceCounted {
public:
    virtual ~ReferenceCounted();

    // Adds one reference.
    virtual void AddRef() const = 0;

    // Drops one reference, and destroys the object if that was the last one.
    virtual void Release() const = 0;

protected:
    // Without data: the count belongs to the derived class.
    ReferenceCounted() = default;
    ReferenceCounted(const ReferenceCounted&) = default;
    ReferenceCounted& operator=(const ReferenceCounted&) = default;
};

}  // namespace VelBase

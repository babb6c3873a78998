// Implements the counting of a reference-counted object.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"

namespace VelSynch {

// Counts references with a plain Count, without atomic operations: an object and its references
// belong to one thread at a time. Objects live on the heap; the Release that brings the count to 0
// deletes them.
template <class Count>
class ReferenceCountedImpl : public virtual VelBase::ReferenceCounted {
public:
    ReferenceCountedImpl() noexcept;
    // A copy is a new object with the count 0; assignment does not change the count.
    ReferenceCountedImpl(const ReferenceCountedImpl& other) noexcept;
    ReferenceCountedImpl& operator=(const ReferenceCountedImpl& other) noexcept;

    // Called by Release before it drops the last reference. Does nothing by default. An override
    // that calls AddRef keeps the object alive.
    virtual void ReferenceCountIsAboutToReachZero() const;

    void AddRef() const override;
    // Deletes the object with its last reference. If there is no reference, only decrements the
    // count.
    void Release() const override;

    // Returns a reference to the count itself, which shows later changes.
    const Count& GetReferenceCount() const noexcept;

protected:
    ~ReferenceCountedImpl() override;

private:
    mutable Count count_ = 0;
};

extern template class VELSOCK_EXPORT ReferenceCountedImpl<int>;

}  // namespace VelSynch

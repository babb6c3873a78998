// The counting half of a reference-counted object.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"

namespace VelSynch {

// Counts references with a plain, not interlocked, Count: an object and its references belong to
// one thread at a time. Objects live on the heap; the Release that brings the count to 0 deletes
// them.
template <class Count>
class ReferenceCountedImpl : public virtual VelBase::ReferenceCounted {
public:
    ReferenceCountedImpl() noexcept;
    // A copied object is a new object: it starts its own count at 0, and assignment leaves the
    // count alone.
    ReferenceCountedImpl(const ReferenceCountedImpl& other) noexcept;
    ReferenceCountedImpl& operator=(const ReferenceCountedImpl& other) noexcept;

    // Called by Release when the last reference is about to go, before the count drops. Does
    // nothing by default. An override that takes a reference keeps the object alive.
    virtual void ReferenceCountIsAboutToReachZero() const;

    void AddRef() const override;
    // A count that was 0 becomes -1, and nothing else happens.
    void Release() const override;

    // The live count: a kept reference sees later changes.
    const Count& GetReferenceCount() const noexcept;

protected:
    ~ReferenceCountedImpl() override;

private:
    mutable Count count_ = 0;
};

extern template class VELSOCK_EXPORT ReferenceCountedImpl<int>;

}  // namespace VelSynch

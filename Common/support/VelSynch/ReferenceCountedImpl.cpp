#include "VelSynch/ReferenceCountedImpl.h"

namespace VelSynch {

template <class Count>
ReferenceCountedImpl<Count>::ReferenceCountedImpl() noexcept = default;

template <class Count>
ReferenceCountedImpl<Count>::ReferenceCountedImpl(const ReferenceCountedImpl&) noexcept
    : VelBase::ReferenceCounted() {}

template <class Count>
ReferenceCountedImpl<Count>& ReferenceCountedImpl<Count>::operator=(
    const ReferenceCountedImpl&) noexcept {
    return *this;
}

template <class Count>
ReferenceCountedImpl<Count>::~ReferenceCountedImpl() = default;

template <class Count>
void ReferenceCountedImpl<Count>::ReferenceCountIsAboutToReachZero() const {}

template <class Count>
void ReferenceCountedImpl<Count>::AddRef() const {
    ++count_;
}

// The count is read again after the hook: a reference that the hook took keeps the object alive.
// Required (ReferenceCountedObject.ReleaseWithoutReferencesOnlyCounts): a count of 0 becomes -1.
template <class Count>
void ReferenceCountedImpl<Count>::Release() const {
    if (count_ == 1) ReferenceCountIsAboutToReachZero();
    if (--count_ == 0) delete this;
}

template <class Count>
const Count& ReferenceCountedImpl<Count>::GetReferenceCount() const noexcept {
    return count_;
}

template class ReferenceCountedImpl<int>;

}  // namespace VelSynch

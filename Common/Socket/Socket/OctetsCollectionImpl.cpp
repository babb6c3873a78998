#include "Socket/OctetsCollectionImpl.h"

#include "VelBase/LengthLimit.h"

namespace VelNet {

OctetsCollection* CreateOctetsCollection() {
    return new OctetsCollectionImpl;
}

// Required (OctetsCollectionList.CountIsAskedForAgainAfterEveryElement): the other list's count is
// read again after each element.
void OctetsCollectionImpl::AddCollection(const OctetsCollection& other) {
    for (unsigned int index = 0; index < other.GetCount(); ++index)
        Add(other.GetOctets(index));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the value.
void OctetsCollectionImpl::Add(Octets octets) {
    VelBase::RequireRoom(elements_.size(), 1, elements_.max_size(), VelBase::VectorTooLong);
    elements_.push_back(octets);
}

unsigned int OctetsCollectionImpl::GetCount() const {
    return static_cast<unsigned int>(elements_.size());
}

Octets OctetsCollectionImpl::GetOctets(unsigned int index) const {
    return elements_[index];
}

}  // namespace VelNet

// Implements OctetsCollection.
#pragma once

#include "VelNet/OctetsCollection.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <vector>

namespace VelNet {

class OctetsCollectionImpl : public OctetsCollection, public VelSynch::ReferenceCountedImpl<int> {
public:
    void AddCollection(const OctetsCollection& other) override;
    void Add(Octets octets) override;
    unsigned int GetCount() const override;
    Octets GetOctets(unsigned int index) const override;

private:
    std::vector<Octets> elements_;
};

}  // namespace VelNet

#include "VelNet/OctetsCollection.h"

namespace VelNet {

OctetsCollection::OctetsCollection() = default;
OctetsCollection::OctetsCollection(const OctetsCollection& other) = default;
OctetsCollection::~OctetsCollection() = default;

// Required (OctetsCollectionList.AssignmentAsksNeitherSide): assignment copies nothing.
// NOLINTNEXTLINE(cert-oop54-cpp, bugprone-unhandled-self-assignment): nothing is assigned.
OctetsCollection& OctetsCollection::operator=(const OctetsCollection&) {
    return *this;
}

}  // namespace VelNet

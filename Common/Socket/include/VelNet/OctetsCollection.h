// A growable list of IPv4 addresses.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"
#include "VelNet/Octets.h"

namespace VelNet {

// A reference-counted list of addresses, as the resolvers return it. Duplicates are kept. The list
// and its references belong to one thread at a time.
class VELSOCK_EXPORT OctetsCollection : public virtual VelBase::ReferenceCounted {
public:
    // An interface without data: copying copies nothing.
    OctetsCollection();
    OctetsCollection(const OctetsCollection& other);
    // Does nothing, whatever the two lists hold: only Add and AddCollection fill a list.
    OctetsCollection& operator=(const OctetsCollection& other);
    ~OctetsCollection() override;

    // Appends a copy of each element of the other list, in order. Do not add a list to itself: the
    // other list's count is read again after each element, so that the call would not end.
    //
    // Throws: what Add throws
    virtual void AddCollection(const OctetsCollection& other) = 0;

    // Appends a copy of the address.
    //
    // Throws: std::bad_alloc
    //         std::length_error  "vector<T> too long": the list cannot be any longer
    virtual void Add(Octets octets) = 0;

    // Returns the number of elements, duplicates included.
    virtual unsigned int GetCount() const = 0;

    // Returns a copy of the element at an index from 0 to GetCount() - 1. The index is not checked;
    // any other is undefined behaviour.
    //
    // Throws: std::bad_alloc
    virtual Octets GetOctets(unsigned int index) const = 0;
};

// Creates an empty list with the reference count 0. The caller takes the first reference, normally
// by putting the list into a VelBase::ReturnPtrI.
//
// Throws: std::bad_alloc
[[nodiscard]] VELSOCK_EXPORT OctetsCollection* CreateOctetsCollection();

}  // namespace VelNet

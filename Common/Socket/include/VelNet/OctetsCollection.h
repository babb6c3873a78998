// A growable list of IPv4 addresses.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReferenceCounted.h"
#include "VelNet/Octets.h"

namespace VelNet {

// A reference-counted list, as the resolvers return it. Duplicates are kept. Used by one thread at
// a time, its references included.
class VELSOCK_EXPORT OctetsCollection : public virtual VelBase::ReferenceCounted {
public:
    OctetsCollection();
    OctetsCollection(const OctetsCollection& other);
    // Does nothing and returns the object: a list is filled with Add and AddCollection only.
    OctetsCollection& operator=(const OctetsCollection& other);
    ~OctetsCollection() override;

    // Appends a copy of every element of the other list, in order. The other list is asked for its
    // count again after every element, so a list must not be added to itself: that never ends.
    // Throws as Add.
    virtual void AddCollection(const OctetsCollection& other) = 0;

    // Appends a copy. Throws std::bad_alloc, and std::length_error "vector<T> too long" past the
    // longest possible list.
    virtual void Add(Octets octets) = 0;

    virtual unsigned int GetCount() const = 0;

    // A copy of the element at the index, counted from 0. The index is not checked: one at or past
    // GetCount() is the caller's error. Throws std::bad_alloc.
    virtual Octets GetOctets(unsigned int index) const = 0;
};

// Makes an empty list with the reference count 0; the caller takes the first reference, normally by
// putting the list into a VelBase::ReturnPtrI. Throws std::bad_alloc.
VELSOCK_EXPORT OctetsCollection* CreateOctetsCollection();

}  // namespace VelNet

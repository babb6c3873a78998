// The names of a key's sub-keys.
#pragma once

#include "VelBase/ReturnWString.h"

#include <vector>

namespace VelRegistry {

// A list in the system's order, owned by whoever asked for it.
class KeyList {
public:
    explicit KeyList(std::vector<VelBase::ReturnWString> names) noexcept;

    unsigned int GetCount() const noexcept;

    // Returns the name at an index from 0 to GetCount() - 1, valid while the list lives.
    const unsigned short* GetItem(unsigned int index) const noexcept;

private:
    std::vector<VelBase::ReturnWString> names_;
};

}  // namespace VelRegistry

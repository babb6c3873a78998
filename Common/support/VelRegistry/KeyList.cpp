#include "VelRegistry/KeyList.h"

#include <utility>

namespace VelRegistry {

KeyList::KeyList(std::vector<VelBase::ReturnWString> names) noexcept : names_(std::move(names)) {}

unsigned int KeyList::GetCount() const noexcept {
    return static_cast<unsigned int>(names_.size());
}

const unsigned short* KeyList::GetItem(unsigned int index) const noexcept {
    return names_[index].c_str();
}

}  // namespace VelRegistry

// The smart pointer that the library itself uses for reference-counted objects.
#pragma once

#include "VelBase/ReturnPtrI.h"

#include <utility>

namespace VelBase {

// Owns one reference, or is empty. A copy owns another reference to the same object.
template <class T>
class InterfaceHolder {
public:
    // Takes a new reference (AddRef).
    explicit InterfaceHolder(T* object) : object_(object) {
        if (object_ != nullptr) object_->AddRef();
    }

    // Takes over the owner's reference.
    explicit InterfaceHolder(ReturnPtrI<T>&& handedOut) noexcept : object_(handedOut.Take()) {}

    InterfaceHolder(const InterfaceHolder& other) : InterfaceHolder(other.object_) {}
    InterfaceHolder& operator=(InterfaceHolder other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    ~InterfaceHolder() { Reset(); }

    // Clears the pointer before it releases the object, since the object's destructor may look at
    // it and must find it empty.
    void Reset() {
        T* const released = object_;
        object_ = nullptr;
        if (released != nullptr) released->Release();
    }

    T* Get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }

private:
    T* object_;
};

}  // namespace VelBase

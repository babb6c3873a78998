// The owner in which the library itself keeps a counted object.
#pragma once

#include "VelBase/ReturnPtrI.h"

namespace VelBase {

// Holds one reference, or nothing. Neither copied nor moved: it stays where it was made.
template <class T>
class InterfaceHolder {
public:
    // Takes a reference of its own.
    explicit InterfaceHolder(T* object) : object_(object) {
        if (object_ != nullptr) object_->AddRef();
    }

    // Takes over the reference that was handed out.
    explicit InterfaceHolder(ReturnPtrI<T>&& handedOut) noexcept : object_(handedOut.Take()) {}

    InterfaceHolder(const InterfaceHolder&) = delete;
    InterfaceHolder& operator=(const InterfaceHolder&) = delete;

    ~InterfaceHolder() { Reset(); }

    // Forgets the object first, then releases it: whoever looks here from the object's destructor
    // finds nothing.
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

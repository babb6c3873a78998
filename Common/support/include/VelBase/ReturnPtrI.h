// A smart pointer that carries a reference-counted object across the module boundary.
#pragma once

namespace VelBase {

// Owns one reference to an object whose interface T derives from ReferenceCounted, or is empty.
// Move-only. Belongs to one thread at a time, like the object.
template <class T>
class ReturnPtrI {
public:
    // An empty owner.
    ReturnPtrI() noexcept = default;

    // Takes a new reference to the object (AddRef); empty for null. Implicit, so that the result of
    // a factory can be assigned and returned directly.
    ReturnPtrI(T* object) : object_(object) {
        if (object_ != nullptr) object_->AddRef();
    }

    // Takes over the reference and leaves the other one empty.
    ReturnPtrI(ReturnPtrI&& other) noexcept : object_(other.Take()) {}

    // Empties itself, then releases what it held, then takes over the other's reference.
    ReturnPtrI& operator=(ReturnPtrI&& other) noexcept {
        if (this != &other) {
            Empty();
            object_ = other.Take();
        }
        return *this;
    }

    ReturnPtrI(const ReturnPtrI&) = delete;
    ReturnPtrI& operator=(const ReturnPtrI&) = delete;

    // Empties itself, then releases what it held.
    ~ReturnPtrI() { Empty(); }

    // Returns the object, or null, and keeps the reference.
    T* Get() const noexcept { return object_; }

    // Returns the object, or null, and passes the reference to the caller; empty afterwards.
    [[nodiscard]] T* Take() noexcept {
        T* const taken = object_;
        object_ = nullptr;
        return taken;
    }

    // The object. Must not be empty.
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }

    // Whether there is an object.
    explicit operator bool() const noexcept { return object_ != nullptr; }

private:
    // The pointer is cleared before the release, since the object's destructor may look at it and
    // must find it empty.
    void Empty() {
        if (T* const released = Take(); released != nullptr) released->Release();
    }

    T* object_ = nullptr;
};

}  // namespace VelBase

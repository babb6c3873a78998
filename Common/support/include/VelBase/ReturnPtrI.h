// The owner in which a counted interface is handed across the module's boundary.
#pragma once

namespace VelBase {

// Holds one reference to an object of an interface T that derives from ReferenceCounted, or
// nothing. Move-only. Belongs to one thread at a time, as the object that it holds does.
template <class T>
class ReturnPtrI {
public:
    // An empty owner.
    ReturnPtrI() noexcept = default;

    // Takes a reference of its own to the object (calls AddRef); null gives an empty owner.
    // Implicit, so that the result of a factory can be assigned and returned as it stands.
    ReturnPtrI(T* object) : object_(object) {
        if (object_ != nullptr) object_->AddRef();
    }

    // The reference passes to the new owner; the old one is empty afterwards.
    ReturnPtrI(ReturnPtrI&& other) noexcept : object_(other.Take()) {}

    // Empties itself, releases what it held, then takes over the other's reference.
    ReturnPtrI& operator=(ReturnPtrI&& other) noexcept {
        if (this != &other) {
            Empty();
            object_ = other.Take();
        }
        return *this;
    }

    ReturnPtrI(const ReturnPtrI&) = delete;
    ReturnPtrI& operator=(const ReturnPtrI&) = delete;

    // Empties itself, then calls Release once, if it holds an object.
    ~ReturnPtrI() { Empty(); }

    // The object, or null. The owner keeps its reference.
    T* Get() const noexcept { return object_; }

    // The object, or null. The reference passes to the caller; the owner is empty afterwards.
    T* Take() noexcept {
        T* const taken = object_;
        object_ = nullptr;
        return taken;
    }

    // The object; the owner must not be empty.
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }

    // True when the owner holds an object.
    explicit operator bool() const noexcept { return object_ != nullptr; }

private:
    // The owner forgets the object before it releases it: a destructor that looks at the owner must
    // find it empty.
    void Empty() {
        if (T* const released = Take(); released != nullptr) released->Release();
    }

    T* object_ = nullptr;
};

}  // namespace VelBase

// The last thing that the destructor of a value does.
#pragma once

namespace VelNet {

// Required: a value that has ended holds null. A plain store to an object whose life ends would be
// dropped by the compiler.
template <class T>
void ClearForGood(T*& pointer) noexcept {
    T* volatile& kept = pointer;
    kept = nullptr;
}

}  // namespace VelNet

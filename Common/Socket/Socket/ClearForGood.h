// Clears the pointer of a value in its destructor.
#pragma once

namespace VelNet {

// Required (OctetsValue.DestructorFreesTheBlockAndNullsThePointer): a destroyed value holds null.
// The compiler would drop a plain store to an object whose lifetime ends.
template <class T>
void ClearForGood(T*& pointer) noexcept {
    T* volatile& kept = pointer;
    kept = nullptr;
}

}  // namespace VelNet

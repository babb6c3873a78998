// A wide string that crosses the module boundary.
#pragma once

#include "VelBase/Export.h"

namespace VelBase {

// Owns a copy of a zero-terminated UTF-16 string of 16-bit units, which the module allocates and
// frees. Each object belongs to one thread at a time.
class VELSOCK_EXPORT ReturnWString {
public:
    // The empty string; does not allocate.
    ReturnWString() noexcept;

    // Copies the units up to and including the first zero; null counts as the empty string.
    // Implicit, so that a string can be returned directly. Throws std::bad_alloc.
    ReturnWString(const unsigned short* text);

    // Copies are deep. Throw std::bad_alloc.
    ReturnWString(const ReturnWString& other);
    ReturnWString& operator=(const ReturnWString& other);
    // A moved-from object holds the empty string.
    ReturnWString(ReturnWString&& other) noexcept;
    ReturnWString& operator=(ReturnWString&& other) noexcept;
    ~ReturnWString();

    // Returns the string, valid until the object is assigned to or destroyed. Never null.
    const unsigned short* c_str() const noexcept VELSOCK_LIFETIMEBOUND;

private:
    unsigned short* text_ = nullptr;
};

}  // namespace VelBase

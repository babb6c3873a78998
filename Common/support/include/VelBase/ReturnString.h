// A narrow string that crosses the module boundary.
#pragma once

#include "VelBase/Export.h"

namespace VelBase {

// Owns a copy of a zero-terminated narrow string, which the module allocates and frees. Each object
// belongs to one thread at a time.
class VELSOCK_EXPORT ReturnString {
public:
    // The empty string; does not allocate.
    ReturnString() noexcept;

    // Copies the string; null counts as the empty one. Implicit, so that a string can be returned
    // directly. Throws std::bad_alloc.
    ReturnString(const char* text);

    // Copies are deep. Throw std::bad_alloc.
    ReturnString(const ReturnString& other);
    ReturnString& operator=(const ReturnString& other);
    // A moved-from object holds the empty string.
    ReturnString(ReturnString&& other) noexcept;
    ReturnString& operator=(ReturnString&& other) noexcept;
    ~ReturnString();

    // Returns the string, valid until the object is assigned to or destroyed. Never null.
    const char* c_str() const noexcept VELSOCK_LIFETIMEBOUND;

private:
    friend class TextRoom;

    char* text_ = nullptr;
};

}  // namespace VelBase

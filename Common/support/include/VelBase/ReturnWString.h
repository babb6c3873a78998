// The owner in which a wide text is handed across the module's boundary.
#pragma once

#include "VelBase/Export.h"

namespace VelBase {

// An owned, zero-terminated copy of a wide text in 16-bit UTF-16 units. The module allocates and
// frees it. A plain value: each object is used by one thread at a time.
class VELSOCK_EXPORT ReturnWString {
public:
    // The empty text; allocates nothing.
    ReturnWString() noexcept;

    // Copies the units up to and including the first zero; null counts as the empty text. Implicit,
    // so that a text can be returned as it stands. Throws std::bad_alloc.
    ReturnWString(const unsigned short* text);

    ReturnWString(const ReturnWString& other);
    ReturnWString& operator=(const ReturnWString& other);
    // A moved-from object holds the empty text.
    ReturnWString(ReturnWString&& other) noexcept;
    ReturnWString& operator=(ReturnWString&& other) noexcept;
    ~ReturnWString();

    // The text, valid until the object is assigned or destroyed. Never null.
    const unsigned short* c_str() const noexcept;

private:
    unsigned short* text_ = nullptr;
};

}  // namespace VelBase

// The owner in which a narrow text is handed across the module's boundary.
#pragma once

#include "VelBase/Export.h"

namespace VelBase {

// An owned, zero-terminated copy of a narrow text. The module allocates and frees it. A plain
// value: each object is used by one thread at a time.
class VELSOCK_EXPORT ReturnString {
public:
    // The empty text; allocates nothing.
    ReturnString() noexcept;

    // Copies the text; null counts as the empty text. Implicit, so that a text can be returned as
    // it stands. Throws std::bad_alloc.
    ReturnString(const char* text);

    ReturnString(const ReturnString& other);
    ReturnString& operator=(const ReturnString& other);
    // A moved-from object holds the empty text.
    ReturnString(ReturnString&& other) noexcept;
    ReturnString& operator=(ReturnString&& other) noexcept;
    ~ReturnString();

    // The text, valid until the object is assigned or destroyed. Never null.
    const char* c_str() const noexcept;

private:
    friend class TextRoom;

    char* text_ = nullptr;
};

}  // namespace VelBase

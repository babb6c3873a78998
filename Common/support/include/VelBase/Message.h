// A message with its origin: the base class of all exceptions that the module throws.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnWString.h"

// windows.h defines GetMessage as a macro for GetMessageA or GetMessageW. The class keeps the plain
// name whatever was included before, and has members of both other names for clients in which the
// macro is active.
#pragma push_macro("GetMessage")
#undef GetMessage

namespace VelBase {

// The domain of every message that this library raises.
inline constexpr unsigned short MESSAGE_DOMAIN_UNKNOWN = 0;

// A domain, an identifier and a wide string: a value that owns its text. It has no virtual
// functions. A handler for Message& catches every exception that the module throws, except those
// of the standard library.
class VELSOCK_EXPORT Message {
public:
    // Unknown domain, identifier 0, empty text; does not allocate.
    Message() noexcept;
    // Deep copies. Can throw std::bad_alloc.
    Message(const Message& other);
    Message& operator=(const Message& other);
    ~Message();

    // The message's origin, and its number there.
    void SetDomainAndID(unsigned short domain, int id) noexcept;
    unsigned short GetDomain() const noexcept;
    int GetID() const noexcept;

    // Copies a zero-terminated text; null counts as the empty text. Can throw std::bad_alloc.
    void SetMessage(const unsigned short* text);

    // Returns the text, valid until the next SetMessage, assignment or destruction. Never null.
    const unsigned short* GetMessage() const noexcept VELSOCK_LIFETIMEBOUND;

    // GetMessage under the names that windows.h gives it.
    const unsigned short* GetMessageA() const noexcept VELSOCK_LIFETIMEBOUND {
        return GetMessage();
    }
    const unsigned short* GetMessageW() const noexcept VELSOCK_LIFETIMEBOUND {
        return GetMessage();
    }

private:
    unsigned short domain_ = MESSAGE_DOMAIN_UNKNOWN;
    int id_ = 0;
    ReturnWString text_;
};

}  // namespace VelBase

#pragma pop_macro("GetMessage")

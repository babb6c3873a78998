// A message with its origin: the base of everything that the module throws.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnWString.h"

// windows.h turns GetMessage into a macro. The class keeps the plain name whatever was included
// before, and answers to both names that the macro can make of it.
#pragma push_macro("GetMessage")
#undef GetMessage

namespace VelBase {

// The domain of every message that this library raises.
inline constexpr unsigned short MESSAGE_DOMAIN_UNKNOWN = 0;

// A plain value: a domain, an identifier and a wide text of which each object owns a copy. Not
// polymorphic. A handler for Message& catches every exception that the module throws, the standard
// library's aside.
class VELSOCK_EXPORT Message {
public:
    // Unknown domain, identifier 0, empty text; allocates nothing.
    Message() noexcept;
    // Copies own a text of their own; both throw std::bad_alloc.
    Message(const Message& other);
    Message& operator=(const Message& other);
    ~Message();

    // Where the message comes from, and its number there.
    void SetDomainAndID(unsigned short domain, int id) noexcept;
    unsigned short GetDomain() const noexcept;
    int GetID() const noexcept;

    // Copies the text; null counts as the empty text. Throws std::bad_alloc.
    void SetMessage(const unsigned short* text);

    // The text, valid until the next SetMessage, assignment or destruction. Never null.
    const unsigned short* GetMessage() const noexcept;

    // GetMessage under the names that windows.h gives it.
    const unsigned short* GetMessageA() const noexcept { return GetMessage(); }
    const unsigned short* GetMessageW() const noexcept { return GetMessage(); }

private:
    unsigned short domain_ = MESSAGE_DOMAIN_UNKNOWN;
    int id_ = 0;
    ReturnWString text_;
};

}  // namespace VelBase

#pragma pop_macro("GetMessage")

// The one exception class of the socket library.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/Message.h"
#include "VelNet/SocketError.h"

// windows.h turns GetMessage into a macro; see VelBase/Message.h.
#pragma push_macro("GetMessage")
#undef GetMessage

namespace VelNet {

// A failure of the socket layer: a wide string and a code. Thrown by value. Failures that are
// reported by other types are listed where they occur: the standard library's exceptions, and the
// one that SocketXt.h names.
//
// The text is stored inside the object, so that copying one during stack unwinding allocates
// nothing. A handler for VelBase::Message& catches it too, but sees only the base class, which has
// no text and the identifier 0 then. Each object belongs to one thread at a time.
class VELSOCK_EXPORT Exception : public VelBase::Message {
public:
    // Copies up to 2999 units of the zero-terminated text and cuts off the rest. The text must not
    // be null: a null pointer leaves both text and code uninitialized.
    Exception(const unsigned short* text, SOCKET_ERR code);

    // Copies the code and the whole text buffer, including what follows the terminator.
    Exception(const Exception& other);
    Exception& operator=(const Exception& other);

    virtual ~Exception();

    // Returns the failure text. It is part of this object and is valid as long as the object lives.
    //
    // The system's error number is one UTF-16 unit of that value in the text (10061 is U+274D), not
    // digits. If the low 16 bits of the number are zero, the text ends there.
    virtual const unsigned short* GetMessage() const VELSOCK_LIFETIMEBOUND;

    // Returns the code that was passed to the constructor.
    SOCKET_ERR GetErrorCode() const noexcept;

    // Returns the code for a Windows Sockets error number, as WSAGetLastError and WSAStartup return
    // it, and SOCKET_ERR_UNKNOWN for a number that is not in the table of errors.
    //
    // Three numbers are in that table without the usual offset of 10000: 43, 44 and 92 are known,
    // 10043, 10044 and 10092 are not. Success is 10000, not 0.
    static SOCKET_ERR GetSocketError(int error) noexcept;

    // Returns the English text for the same numbers, and "Unknown error" for all others. The string
    // is static and never null.
    static const unsigned short* GetErrorString(int error) noexcept;

    // GetMessage under the names that windows.h gives it.
    const unsigned short* GetMessageA() const VELSOCK_LIFETIMEBOUND { return GetMessage(); }
    const unsigned short* GetMessageW() const VELSOCK_LIFETIMEBOUND { return GetMessage(); }

private:
    static constexpr unsigned int TextUnits = 3000;

    unsigned short text_[TextUnits];
    SOCKET_ERR code_;
};

}  // namespace VelNet

#pragma pop_macro("GetMessage")

// The one exception class of the socket library.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/Message.h"
#include "VelNet/SocketError.h"

// windows.h turns GetMessage into a macro; see VelBase/Message.h.
#pragma push_macro("GetMessage")
#undef GetMessage

namespace VelNet {

// Thrown by value for every failure of the socket layer, save the one that SocketXt.h names: a wide
// text and a code. The text is held
// in the object itself, so copying one while the stack unwinds allocates nothing. A handler for
// VelBase::Message& catches it as well, but sees only the base, which this library leaves empty. A
// plain value: each object is used by one thread at a time.
class VELSOCK_EXPORT Exception : public VelBase::Message {
public:
    // Keeps the first 2999 units of the zero-terminated text; the rest is cut without notice. A
    // null text leaves both text and code unwritten: never pass one.
    Exception(const unsigned short* text, SOCKET_ERR code);

    // Copies the whole text buffer, what follows the terminator included, and the code.
    Exception(const Exception& other);
    Exception& operator=(const Exception& other);

    virtual ~Exception();

    // The failure text, inside this object and valid as long as it lives.
    //
    // The number of the system error stands in it as one unit with that value (10061 as U+274D),
    // not as digits. A number whose low 16 bits are zero thus ends the text early.
    virtual const unsigned short* GetMessage() const;

    // The code that it was made with.
    SOCKET_ERR GetErrorCode() const noexcept;

    // The code for a Windows Sockets error number, as WSAGetLastError and WSAStartup give it;
    // SOCKET_ERR_UNKNOWN for a number that is not in the table of errors. Three numbers stand in
    // that table without their usual offset: 43, 44 and 92 are known, 10043, 10044 and 10092 are
    // not; success is 10000, not 0.
    static SOCKET_ERR GetSocketError(int error) noexcept;

    // The English text for the same numbers, "Unknown error" for all others. Static storage; never
    // null.
    static const unsigned short* GetErrorString(int error) noexcept;

    // GetMessage under the names that windows.h gives it.
    const unsigned short* GetMessageA() const { return GetMessage(); }
    const unsigned short* GetMessageW() const { return GetMessage(); }

private:
    static constexpr unsigned int TextUnits = 3000;

    unsigned short text_[TextUnits];
    SOCKET_ERR code_;
};

}  // namespace VelNet

#pragma pop_macro("GetMessage")

// What the tests of failing calls of the system share: the failures, and how they become numbers,
// codes and texts.
#pragma once

#include <loopback/Failure.h>
#include <support/posix/SystemCallFaults.h>

#include <cerrno>
#include <string>
#include <string_view>

namespace Loopback {

// A number of the system, Winsock's for it, and what an exception makes of that.
struct Fault {
    int system;
    int winsock;
    std::u16string_view text;
    bool inTable = true;  // otherwise the code is -1

    int Code() const { return inTable ? winsock : -1; }
    // Of an operation whose text ends with the error.
    Failure Of(const std::u16string& text_) const {
        return {SystemFailure(text_, winsock, text).text, Code()};
    }
};

// One that says why, one that is the machine's, one that sockets do not have, one that the table of
// errors has no row for, and one that nobody expects.
inline constexpr Fault Faults[] = {
    {EPERM, 10013, u"Permission denied"},    {ENOMEM, 10055, u"No buffer space available"},
    {EDQUOT, 10069, u"Disk quota exceeded"}, {EPROTONOSUPPORT, 10043, u"Unknown error", false},
    {EILSEQ, 10022, u"Invalid argument"},
};

}  // namespace Loopback

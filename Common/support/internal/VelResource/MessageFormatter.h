// Inserts arguments into a message format.
#pragma once

#include "VelBase/WideText.h"

namespace VelResource {

// One argument. Strings are not copied: they must live until the message has been written.
struct MessageArgument {
    enum class Kind { WideText, NarrowText, Integer };

    Kind kind;
    const unsigned short* wide;
    const char* narrow;
    int integer;
};

// The process has one formatter, but each thread has its own list of arguments in it. Adding an
// argument does not allocate, except for a thread's list on its first use where the compiler
// emulates thread-local storage (mingw-w64).
class MessageFormatter {
public:
    static constexpr int MaximumArguments = 9;

    // Each adds the next argument, %1 first, and returns the formatter. A tenth argument is
    // dropped, since no format can name it.
    MessageFormatter& AddWideText(const unsigned short* text) noexcept;
    MessageFormatter& AddNarrowText(const char* text) noexcept;  // in the system's code page
    MessageFormatter& AddInteger(int number) noexcept;

    // The connection that the calling thread's message is about; 0 for none.
    void SetConnection(unsigned int connection) noexcept;
    unsigned int Connection() const noexcept;

    // Clears the calling thread's arguments and its connection.
    void Clear() noexcept;

    int ArgumentCount() const noexcept;
    // Returns the argument at a position from 0 to ArgumentCount() - 1.
    const MessageArgument& Argument(int position) const noexcept;

    // Returns the format (UTF-8) with %1 to %9 replaced by the arguments in one pass: placeholders
    // inside an argument are not replaced. A placeholder without an argument, and a % before any
    // other character, are kept.
    VelBase::WideText Format(const char* format) const;
};

}  // namespace VelResource

// Puts arguments into the places of a message format.
#pragma once

#include "VelBase/WideText.h"

namespace VelResource {

// One argument as it was fed. Texts are borrowed: they must live until the message is written.
struct MessageArgument {
    enum class Kind { WideText, NarrowText, Integer };

    Kind kind;
    const unsigned short* wide;
    const char* narrow;
    int integer;
};

// The process has one formatter; the arguments that it holds are the calling thread's own, so
// threads do not see each other's. Feeding allocates nothing, except a thread's list on its first
// use where the compiler emulates thread storage (mingw-w64).
class MessageFormatter {
public:
    static constexpr int MaximumArguments = 9;

    // Each takes the next argument, %1 first, and returns the formatter itself. A tenth argument
    // has no place in any format and is dropped.
    MessageFormatter& AddWideText(const unsigned short* text) noexcept;
    MessageFormatter& AddNarrowText(const char* text) noexcept;  // in the code page
    MessageFormatter& AddInteger(int number) noexcept;

    // Forgets the calling thread's arguments.
    void Clear() noexcept;

    int ArgumentCount() const noexcept;
    // The argument at a position from 0 to ArgumentCount() - 1.
    const MessageArgument& Argument(int position) const noexcept;

    // The format (UTF-8) with %1 to %9 replaced by the arguments in one pass: what an argument
    // contains is not looked at again. A place without an argument, and a % before anything else,
    // stand as they are.
    VelBase::WideText Format(const char* format) const;
};

}  // namespace VelResource

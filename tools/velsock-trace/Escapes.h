// Values of a line's members that may be quoted.
#pragma once

#include <string>
#include <string_view>

namespace VelSockTrace {

// Takes a quoted string from the beginning of the text, which is its opening quotation mark. The
// value is the string without the marks; if there are escapes, it is resolved in the scratch
// string, behind what is there already. Escapes are those of JSON; an unknown one stands for the
// letter itself. Without a closing mark all of the text is taken.
std::string_view TakeQuoted(std::string_view& text, std::string& scratch);

}  // namespace VelSockTrace

// Refuses to let a container grow too long.
#pragma once

#include <cstddef>

namespace VelBase {

inline constexpr char ListTooLong[] = "list<T> too long";
inline constexpr char VectorTooLong[] = "vector<T> too long";
inline constexpr char StringTooLong[] = "string too long";

// Throws std::length_error with the text if length plus more exceeds the maximum. The text is the
// same on every system, whatever the standard library would say.
void RequireRoom(std::size_t length, std::size_t more, std::size_t maximum, const char* text);

}  // namespace VelBase

// The one builder of wide texts.
#pragma once

#include "VelBase/ReturnWString.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace VelBase {

// A growing text of 16-bit units, zero-terminated at all times. Used by one thread at a time.
// Growing throws std::bad_alloc, and std::length_error "string too long" past the longest possible
// text.
class WideText {
public:
    WideText();

    // Makes room for so many units at once.
    void Reserve(std::size_t units);

    // Each returns the text itself. A null text appends nothing. The units must not be the text's
    // own.
    WideText& Append(const unsigned short* text);
    WideText& Append(const unsigned short* units, std::size_t count);
    WideText& Append(const std::vector<unsigned short>& units) {
        return Append(units.data(), units.size());
    }
    WideText& Append(const ReturnWString& text) { return Append(text.c_str()); }
    WideText& Append(unsigned short unit);
    // UTF-8; each maximal broken part becomes U+FFFD.
    WideText& AppendUtf8(std::string_view text);

    // Without the terminator.
    std::size_t Length() const noexcept { return units_.size() - 1; }
    const unsigned short* Units() const noexcept { return units_.data(); }

    // The text as its reader will see it: up to the first zero unit, wherever that stands.
    ReturnWString ToReturnWString() const { return ReturnWString(Units()); }

private:
    void RequireRoomFor(std::size_t more) const;

    std::vector<unsigned short> units_;  // with the terminator
};

// The number of units before the terminator; 0 for null.
std::size_t WideLength(const unsigned short* text) noexcept;

}  // namespace VelBase

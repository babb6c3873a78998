// The builder of wide strings.
#pragma once

#include "VelBase/ReturnWString.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace VelBase {

// A growing string of 16-bit units, zero-terminated at all times. Belongs to one thread at a time.
//
// Growing throws std::bad_alloc, and std::length_error "string too long" if no string can be that
// long.
class WideText {
public:
    // Takes memory for that many units at once.
    explicit WideText(std::size_t room = 0);

    // Each returns the object itself. Null appends nothing. The units must not be the object's own.
    WideText& Append(const unsigned short* text);
    WideText& Append(const unsigned short* units, std::size_t count);
    WideText& Append(const std::vector<unsigned short>& units) {
        return Append(units.data(), units.size());
    }
    WideText& Append(const ReturnWString& text) { return Append(text.c_str()); }
    WideText& Append(unsigned short unit);
    // Takes UTF-8; each maximal invalid part becomes U+FFFD.
    WideText& AppendUtf8(std::string_view text);
    // Takes the system's code page.
    WideText& AppendMultiByte(std::string_view text);
    // In decimal digits, with a minus sign if it is negative.
    WideText& AppendDecimal(int number);

    // Does not count the terminator.
    std::size_t Length() const noexcept { return length_; }
    const unsigned short* Units() const noexcept { return units_.get(); }

    // Returns the text as a reader sees it: up to the first zero unit, wherever that is.
    ReturnWString ToReturnWString() const { return ReturnWString(Units()); }

private:
    // Makes the text longer by that many units, which are not initialized, and returns where they
    // go.
    unsigned short* Extend(std::size_t count);
    void Grow(std::size_t count);
    // To one that the memory has room for.
    void SetLength(std::size_t length) noexcept;

    std::size_t room_;  // without the terminator
    std::size_t length_ = 0;
    std::unique_ptr<unsigned short[]> units_;
};

}  // namespace VelBase

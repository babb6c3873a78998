// The table of errors as it must be, written out a second time, and what follows from it.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace FoundationTests {

struct ExpectedErrorRow {
    int bsdErrno;
    int aixErrno;
    int hpuxErrno;
    int solarisErrno;
    int linuxErrno;
    int key;
    int code;
    std::u16string_view text;

    bool operator==(const ExpectedErrorRow&) const = default;
};

inline constexpr std::size_t ErrorRowCount = 57;
inline constexpr std::size_t TerminatingRow = ErrorRowCount - 1;
extern const std::array<ExpectedErrorRow, ErrorRowCount> ExpectedErrorTable;

// The row that a look-up of the number must end at.
const ExpectedErrorRow& ExpectedRow(int error);

// What a reader must see of a failure text: the ASCII head (label, space, description), the
// lead-in, the number as one unit, a space, the error's text; nothing after a unit of 0.
std::u16string ExpectedFailureText(std::string_view head, int error);

}  // namespace FoundationTests

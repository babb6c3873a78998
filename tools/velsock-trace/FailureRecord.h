// What the text of a failure tells.
#pragma once

#include <string>
#include <string_view>

namespace VelSockTrace {

struct FailureRecord {
    // The system's number, which the text has as one character; 0 if it has none, and -1 if the
    // system reported none.
    int number = 0;
    bool isEnd = false;         // the peer has ended its direction in an orderly way
    bool isConnecting = false;  // no connection was established
    bool isTransfer = false;    // bytes could not be sent or received
    std::string ends;           // as in other records; empty if the text does not tell both
};

FailureRecord ReadFailure(std::string_view text);

// Whether a connection is lost after the error, unlike after a timeout or an interruption.
bool IsLoss(int number) noexcept;

}  // namespace VelSockTrace

// Trials that every operation of sockets and resolvers has to stand.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "SocketFixture.h"

namespace SocketTests {

// An operation whose system call fails, and how that must go whatever the error number is.
struct FailingOperation {
    std::function<void(int)> failWith;  // scripts the failure with the number
    std::function<void()> operation;
    std::string text;                // the failure text before ", errno = "
    std::vector<std::string> calls;  // the calls of the system
    // What must be the same before and after.
    std::function<std::string()> memory = [] { return std::string(); };
    bool isLogged = true;
    std::vector<std::string> callsAfterwards = {};  // once the failure has been logged
};

// Runs the operation with each of the numbers, first with the "Error" router on, then with it off.
// Compares the text, the code, the calls and their order, the records and the memory each time. The
// test has written no record before.
void ExpectEachFailure(const FailingOperation& failing,
                       const std::vector<int>& numbers = ErrorNumbers());

// What a socket remembers, for FailingOperation.
std::function<std::string()> MemoryOf(const SocketImpl& socket);

// The error numbers but these.
std::vector<int> ErrorNumbersWithout(const std::vector<int>& excluded);

// The transcript with "LogMessage" alone in place of each record.
std::vector<std::string> TranscriptWithRecordsShortened();

// The record of a connection made ("Connected") or closed ("Disconnected").
Record ConnectionRecord(const std::string& event, const std::string& localHost,
                        unsigned short localPort, const std::string& remoteHost,
                        unsigned short remotePort);

// The records of a transfer ("Sent" or "Received") between the endpoints of MakeConnectedSocket.
Record TransferRecord(const std::string& event, int count);
Record TransferRecordWithData(const std::string& event, int count, const std::string& data);

// Switches the routers of the plain transfer records and of those with data.
void SwitchPacketTracing(bool plain, bool withData);

// How many blocks since the mark had room for a failure text. A text that grows within the room
// made beforehand needs one.
int FailureTextBlocksSince(const Allocations::Mark& mark);

}  // namespace SocketTests

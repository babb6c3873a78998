// Short programs over the public headers. Together they call every public operation, which
// CheckScenes.sh holds against the lists of tests/abi; so whatever can fail in the library fails in
// one of them.
//
// A scene runs in one thread on sockets of the loopback interface and never waits for more than a
// moment: its peers have acted before it asks. What it returns is the same each time: no port, no
// time. It lets the library's exceptions out; Broken tells of what no failure may lead to.
#pragma once

#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketXt.h>
#include <support/posix/ClosedAfter.h>

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace Faults {

// A result that is neither the expected one nor a failure: bytes that nobody sent, for one.
class Broken : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

struct Scene {
    const char* name;
    std::string (*play)();
    // What one run leaves allocated, as documented: one list for each of these calls.
    unsigned int keptLists = 0;
    bool needsStandardError = false;
};

std::vector<Scene> LayerScenes();
std::vector<Scene> ClassicScenes();
std::vector<Scene> ExtendedScenes();
std::vector<Scene> ExtendedDatagramScenes();
std::vector<Scene> CollectionScenes();
std::vector<Scene> NameScenes();
std::vector<Scene> ValueScenes();
std::vector<Scene> TextScenes();
std::vector<Scene> LogScenes();
std::vector<Scene> CompanionScenes();

// All of them.
std::vector<Scene> Scenes();
// They wait for most of their time, so that parts of them may well run at once.
inline constexpr std::size_t SceneParts = 4;
std::vector<Scene> ScenesOf(std::size_t part);

using SocketPtr = VelBase::ReturnPtrI<VelNet::Socket>;
using XtPtr = VelBase::ReturnPtrI<VelNet::SocketXt>;

SocketPtr Stream();
SocketPtr Datagram();
SocketPtr Listener();
VelNet::Octets Loopback();
// Both ends of a connection.
struct Ends {
    SocketPtr client;
    SocketPtr server;
};
Ends Connected();

// Sends the bytes, in as many calls as it takes; receives so many.
void SendWhole(VelNet::Socket& socket, const std::string& bytes);
std::string ReceiveWhole(VelNet::Socket& socket, std::size_t count);

// Closes a socket that waits for its timeout in vain, since the system refused to set it.
class ClosedAfterAWhile {
public:
    explicit ClosedAfterAWhile(VelNet::Socket& socket);

private:
    Support::ClosedAfter closed_;
};

void Require(bool condition, const char* what);

// "failed with CODE" or "succeeded". Failures with other codes than that are the caller's.
template <class Operation>
std::string OutcomeOf(int code, const Operation& operation) {
    try {
        operation();
    } catch (const VelNet::Exception& failure) {
        if (failure.GetErrorCode() != code) throw;
        return "failed with " + std::to_string(code) + '\n';
    }
    return "succeeded\n";
}

template <class Value>
std::string Line(Value value) {
    if constexpr (std::is_same_v<Value, bool>) {
        return value ? "yes\n" : "no\n";
    } else if constexpr (std::is_arithmetic_v<Value>) {
        return std::to_string(value) + '\n';
    } else {
        return std::string(value) + '\n';
    }
}

}  // namespace Faults

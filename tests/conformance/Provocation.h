// Situations that the calls under test cannot bring about themselves. Everything here is made with
// the bare means of the system; this is the only part of the suite that is not the same on every
// system.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "support/RawPeer.h"

namespace Conformance {

using Support::EndSending;
using Support::RawPeer;

// Whether a plain bind to the port is refused as taken.
bool FindsPortTaken(unsigned int port);
// The same of a bind with the system's own option for addresses in use.
bool FindsPortTakenThoughReusing(unsigned int port);

// A listener on the loopback address whose queue is full, so that a connection to it stays
// unfinished.
class FullListener {
public:
    FullListener();
    unsigned int Port() const { return port_; }
    // Makes room. The next connection attempt of the client's system, within seconds, succeeds.
    void Drain();
    // Refuses the next connection attempt.
    void Close();

private:
    RawPeer listener_;
    RawPeer filler_;
    unsigned int port_ = 0;
};

// Whether the system itself gives a port to others while its last connections are just ending.
bool EndedConnectionsLeavePortsFree();

// Waits until the handle's connection is known to have ended.
void AwaitEnd(unsigned long long handle);
// Waits until data or the peer's end can be read.
void AwaitReadable(unsigned long long handle);

bool IsInheritedByPrograms(unsigned long long handle);

// While it lives, a signal whose handler does nothing to restart calls comes every few
// milliseconds. The action runs once within the handler, when the storm has lasted a while.
class SignalStorm {
public:
    explicit SignalStorm(std::function<void()> action = {}, int milliseconds = 3);
    ~SignalStorm();
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;

    static int SignalCount();
};

// Changes how many descriptors the process may have, for its lifetime.
class DescriptorLimit {
public:
    explicit DescriptorLimit(unsigned long limit);
    ~DescriptorLimit();
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

    bool IsSet() const { return set_; }
    // A limit that leaves no descriptor free.
    static unsigned long Exhausting();

private:
    unsigned long former_ = 0;
    bool set_ = false;
};

// Puts a pipe with some text in the place of standard input.
class WatchedStandardInput {
public:
    explicit WatchedStandardInput(const std::string& text);
    ~WatchedStandardInput();
    WatchedStandardInput(const WatchedStandardInput&) = delete;
    WatchedStandardInput& operator=(const WatchedStandardInput&) = delete;

    // Reads what is left of the text.
    static std::string Rest();

private:
    int former_;
};

// Another file that takes the number of a closed socket.
class FileInPlaceOf {
public:
    explicit FileInPlaceOf(unsigned long long handle);
    ~FileInPlaceOf();
    FileInPlaceOf(const FileInPlaceOf&) = delete;
    FileInPlaceOf& operator=(const FileInPlaceOf&) = delete;

    bool IsStillOpen() const;

private:
    int descriptor_;
};

// Runs the scene in a process of its own that resolves names from these files alone and has no
// network but its own. Impossible when the system does not let us.
enum class SceneResult { Passed, Failed, Impossible };
SceneResult RunWithNames(const std::string& hostsFile, const std::string& hostName,
                         const std::function<bool()>& scene, const std::string& sources = "files");

}  // namespace Conformance

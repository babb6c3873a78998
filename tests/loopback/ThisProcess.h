// What the tests ask of the system about their own process, and do to it, because the library's
// public classes cannot provoke or tell it. posix/ and windows/ hold an implementation for each
// system; the comments say what the one for Windows does where that is not plain. Whatever fails
// throws std::runtime_error.
#pragma once

#include <support/RawPeer.h>

#include <string>
#include <thread>
#include <vector>

namespace ThisProcess {

// Holds that many descriptors open that any new one has a number above their count. The process's
// limit is raised to the highest that it may have.
//
// Windows: as many sockets; the numbers of handles mean nothing there.
class ManyDescriptors {
public:
    explicit ManyDescriptors(int count);
    ~ManyDescriptors();
    ManyDescriptors(const ManyDescriptors&) = delete;
    ManyDescriptors& operator=(const ManyDescriptors&) = delete;

private:
    const Support::RawSockets sockets_;
    std::vector<int> descriptors_;
};

// How many sockets and files the process holds open. Windows: the sockets.
int OpenDescriptors();

// How many threads the process has.
int ThreadCount();

// The name of this computer, as the system tells it. Windows: what gethostname of a bare program
// gives.
std::string HostName();

// What the process does with every signal, as a text to compare. Windows: the handlers of the C
// runtime's signals.
std::string SignalDispositions();

// Counts the signals with which the system tells a sender that its peer is gone, for as long as it
// lives, instead of letting them end the process. Windows has no such signal: always 0.
class BrokenPipeSignals {
public:
    BrokenPipeSignals();
    ~BrokenPipeSignals();
    BrokenPipeSignals(const BrokenPipeSignals&) = delete;
    BrokenPipeSignals& operator=(const BrokenPipeSignals&) = delete;

    int Count() const noexcept;
};

// Interrupts the system calls of the thread that made it, by signals whose handler does not restart
// them. One at a time.
//
// Windows cannot interrupt a call: Interrupt does nothing there, and Count counts its calls.
class InterruptedThread {
public:
    InterruptedThread();
    ~InterruptedThread();
    InterruptedThread(const InterruptedThread&) = delete;
    InterruptedThread& operator=(const InterruptedThread&) = delete;

    // Called by another thread: waits until the thread sleeps in a system call, interrupts it, and
    // waits until the handler has run.
    void Interrupt();

    int Count() const noexcept;

private:
    std::thread::native_handle_type thread_;
    long long threadId_;
};

// What the process writes to its standard error, kept instead of shown. Windows: the handle that
// GetStdHandle gives.
class StandardErrorCapture {
public:
    StandardErrorCapture();
    ~StandardErrorCapture();
    StandardErrorCapture(const StandardErrorCapture&) = delete;
    StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;

    // All that was written; from now on it is shown again.
    std::string Finish();

private:
    void Restore() noexcept;

    int original_;
    int file_;
};

}  // namespace ThisProcess

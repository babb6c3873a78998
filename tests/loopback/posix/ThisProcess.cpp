#include <dirent.h>
#include <fcntl.h>
#include <loopback/ThisProcess.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <support/Threads.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace ThisProcess {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int PatienceInSeconds = 60;

template <class Result>
Result Require(Result result, const char* call) {
    if (result == -1) throw std::runtime_error(std::string(call) + ": " + std::strerror(errno));
    return result;
}

int EntriesOf(const char* path) {
    DIR* const directory = opendir(path);
    if (directory == nullptr) throw std::runtime_error(path);
    int count = -2;  // the folder itself and the one above
    while (readdir(directory) != nullptr) {
        ++count;
    }
    closedir(directory);
    return count;
}

template <class Condition>
void WaitUntil(Condition condition, const char* what) {
    const auto end = Clock::now() + std::chrono::seconds(PatienceInSeconds);
    while (!condition()) {
        if (Clock::now() > end) throw std::runtime_error(what);
        std::this_thread::yield();
    }
}

std::atomic<int> g_brokenPipes = 0;
std::atomic<int> g_interruptions = 0;

struct sigaction g_formerBrokenPipeAction = {};
struct sigaction g_formerInterruptionAction = {};

void Handle(int signal, void (*handler)(int), struct sigaction& former) {
    struct sigaction action = {};
    action.sa_handler = handler;  // no SA_RESTART among the flags
    sigemptyset(&action.sa_mask);
    Require(sigaction(signal, &action, &former), "sigaction");
}

}  // namespace

ManyDescriptors::ManyDescriptors(int count) {
    rlimit limit = {};
    Require(getrlimit(RLIMIT_NOFILE, &limit), "getrlimit");
    limit.rlim_cur = limit.rlim_max;
    Require(setrlimit(RLIMIT_NOFILE, &limit), "setrlimit");

    // The lowest free number each time: at the end none is free below.
    descriptors_ = {Require(open("/dev/null", O_RDONLY | O_CLOEXEC), "open")};
    while (descriptors_.back() < count) {
        descriptors_.push_back(
            Require(fcntl(descriptors_.front(), F_DUPFD_CLOEXEC, 0), "too few descriptors"));
    }
}

ManyDescriptors::~ManyDescriptors() {
    for (const int descriptor : descriptors_) {
        close(descriptor);
    }
}

int OpenDescriptors() {
    return EntriesOf("/proc/self/fd") - 1;  // without the one that reads the folder
}

int ThreadCount() {
    return EntriesOf("/proc/self/task");
}

std::string HostName() {
    char name[256] = {};
    Require(gethostname(name, sizeof name - 1), "gethostname");
    return name;
}

std::string SignalDispositions() {
    std::string text;
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0) continue;
        char bytes[sizeof action.sa_handler];
        std::memcpy(bytes, &action.sa_handler, sizeof bytes);
        text.append(std::to_string(signal)).append(bytes, sizeof bytes);
        text.append(std::to_string(action.sa_flags)).append("\n");
    }
    return text;
}

BrokenPipeSignals::BrokenPipeSignals() {
    g_brokenPipes = 0;
    Handle(
        SIGPIPE, [](int) { ++g_brokenPipes; }, g_formerBrokenPipeAction);
}

BrokenPipeSignals::~BrokenPipeSignals() {
    sigaction(SIGPIPE, &g_formerBrokenPipeAction, nullptr);
}

int BrokenPipeSignals::Count() const noexcept {
    return g_brokenPipes;
}

InterruptedThread::InterruptedThread() : thread_(pthread_self()), threadId_(syscall(SYS_gettid)) {
    g_interruptions = 0;
    Handle(
        SIGUSR1, [](int) { ++g_interruptions; }, g_formerInterruptionAction);
}

InterruptedThread::~InterruptedThread() {
    sigaction(SIGUSR1, &g_formerInterruptionAction, nullptr);
}

void InterruptedThread::Interrupt() {
    Support::AwaitWaiting(static_cast<unsigned long>(threadId_));
    const int before = g_interruptions;
    if (pthread_kill(thread_, SIGUSR1) != 0) throw std::runtime_error("pthread_kill");
    WaitUntil([before] { return g_interruptions != before; }, "the signal was not handled");
}

int InterruptedThread::Count() const noexcept {
    return g_interruptions;
}

StandardErrorCapture::StandardErrorCapture() : original_(Require(dup(STDERR_FILENO), "dup")) {
    std::string path = (std::filesystem::temp_directory_path() / "standard-error-XXXXXX").string();
    file_ = Require(mkstemp(path.data()), "mkstemp");
    unlink(path.c_str());
    Require(dup2(file_, STDERR_FILENO), "dup2");
}

StandardErrorCapture::~StandardErrorCapture() {
    Restore();
    close(file_);
}

std::string StandardErrorCapture::Finish() {
    Restore();
    const off_t size = Require(lseek(file_, 0, SEEK_END), "lseek");
    std::string text(static_cast<std::size_t>(size), '\0');
    Require(pread(file_, text.data(), text.size(), 0), "pread");
    return text;
}

void StandardErrorCapture::Restore() noexcept {
    if (original_ == -1) return;
    dup2(original_, STDERR_FILENO);
    close(original_);
    original_ = -1;
}

}  // namespace ThisProcess

#include "conformance/Provocation.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "support/TemporaryFolder.h"

// Finds what nobody can give back any more, in builds that watch that: a child that ends at once
// would not do it by itself.
extern "C" [[gnu::weak]] int
__lsan_do_recoverable_leak_check();  // NOLINT(bugprone-reserved-identifier)

namespace Conformance {

namespace {

void Require(bool done, const char* what) {
    if (!done) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

union RawAddress {
    sockaddr any;
    sockaddr_in ipv4;
};

RawAddress RawLoopback(unsigned int port) {
    RawAddress address = {};
    address.ipv4.sin_family = AF_INET;
    address.ipv4.sin_port = htons(static_cast<std::uint16_t>(port));
    address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void Await(unsigned long long handle, short events) {
    pollfd wait = {static_cast<int>(handle), events, 0};
    Require(::poll(&wait, 1, 60'000) == 1, "the event did not come");
}

bool IsTakenFor(const RawPeer& peer, unsigned int port) {
    const RawAddress address = RawLoopback(port);
    return ::bind(peer.Descriptor(), &address.any, sizeof address) < 0 && errno == EADDRINUSE;
}

}  // namespace

bool FindsPortTaken(unsigned int port) {
    return IsTakenFor(RawPeer::Unconnected(), port);
}

bool FindsPortTakenThoughReusing(unsigned int port) {
    const RawPeer peer = RawPeer::Unconnected();
    const int on = 1;
    Require(::setsockopt(peer.Descriptor(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0,
            "setsockopt");
    return IsTakenFor(peer, port);
}

FullListener::FullListener() : listener_(RawPeer::Unconnected()) {
    const RawAddress address = RawLoopback(0);
    Require(::bind(listener_.Descriptor(), &address.any, sizeof address) == 0, "bind");
    Require(::listen(listener_.Descriptor(), 0) == 0, "listen");
    port_ = listener_.LocalPort();
    filler_ = RawPeer::ConnectedTo(port_);
}

void FullListener::Drain() {
    const RawPeer accepted(::accept(listener_.Descriptor(), nullptr, nullptr));
}

void FullListener::Close() {
    listener_.Close();
}

bool EndedConnectionsLeavePortsFree() {
    return false;
}

void AwaitEnd(unsigned long long handle) {
    Await(handle, 0);
}

void AwaitReadable(unsigned long long handle) {
    Await(handle, POLLIN);
}

bool IsInheritedByPrograms(unsigned long long handle) {
    const int flags = ::fcntl(static_cast<int>(handle), F_GETFD);
    Require(flags >= 0, "fcntl");
    return (flags & FD_CLOEXEC) == 0;
}

namespace {

constexpr int SignalsBeforeAction = 20;
std::atomic<int> signalCount = 0;
std::function<void()>* stormAction = nullptr;

void CountSignal(int) {
    const int error = errno;
    const bool act = ++signalCount == SignalsBeforeAction && stormAction != nullptr;
    if (act && *stormAction) (*stormAction)();
    errno = error;
}

void SetSignals(void (*handler)(int), suseconds_t interval) {
    struct sigaction action = {};
    action.sa_handler = handler;
    Require(::sigaction(SIGALRM, &action, nullptr) == 0, "sigaction");
    const itimerval timer = {.it_interval = {.tv_sec = 0, .tv_usec = interval},
                             .it_value = {.tv_sec = 0, .tv_usec = interval}};
    Require(::setitimer(ITIMER_REAL, &timer, nullptr) == 0, "setitimer");
}

}  // namespace

SignalStorm::SignalStorm(std::function<void()> action, int milliseconds) {
    signalCount = 0;
    stormAction = new std::function<void()>(std::move(action));
    SetSignals(CountSignal, milliseconds * 1000);
}

SignalStorm::~SignalStorm() {
    SetSignals(SIG_IGN, 0);
    delete std::exchange(stormAction, nullptr);
}

int SignalStorm::SignalCount() {
    return signalCount;
}

DescriptorLimit::DescriptorLimit(unsigned long limit) {
    rlimit limits = {};
    Require(::getrlimit(RLIMIT_NOFILE, &limits) == 0, "getrlimit");
    former_ = limits.rlim_cur;
    limits.rlim_cur = limit;
    set_ = limit <= limits.rlim_max && ::setrlimit(RLIMIT_NOFILE, &limits) == 0;
}

DescriptorLimit::~DescriptorLimit() {
    rlimit limits = {};
    ::getrlimit(RLIMIT_NOFILE, &limits);
    limits.rlim_cur = former_;
    ::setrlimit(RLIMIT_NOFILE, &limits);
}

unsigned long DescriptorLimit::Exhausting() {
    const int lowestFree = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    Require(lowestFree >= 0, "open");
    ::close(lowestFree);
    return static_cast<unsigned long>(lowestFree);
}

WatchedStandardInput::WatchedStandardInput(const std::string& text)
    : former_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
    int ends[2];
    Require(::pipe2(ends, O_CLOEXEC) == 0, "pipe");
    Require(::write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()),
            "write");
    Require(::dup2(ends[0], STDIN_FILENO) == STDIN_FILENO, "dup2");
    ::close(ends[0]);
    ::close(ends[1]);
}

WatchedStandardInput::~WatchedStandardInput() {
    if (former_ < 0) return;
    ::dup2(former_, STDIN_FILENO);
    ::close(former_);
}

std::string WatchedStandardInput::Rest() {
    char buffer[256];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    return count < 0 ? "unreadable" : std::string(buffer, static_cast<std::size_t>(count));
}

FileInPlaceOf::FileInPlaceOf(unsigned long long handle) : descriptor_(static_cast<int>(handle)) {
    const int file = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    Require(file >= 0, "open");
    if (file == descriptor_) return;
    Require(::dup2(file, descriptor_) == descriptor_, "dup2");
    ::close(file);
}

FileInPlaceOf::~FileInPlaceOf() {
    ::close(descriptor_);
}

bool FileInPlaceOf::IsStillOpen() const {
    return ::fcntl(descriptor_, F_GETFD) >= 0;
}

namespace {

constexpr int ImpossibleCode = 77;

bool HasLeaks() {
    return __lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0;
}

bool CoverFile(const std::string& directory, const char* path, const std::string& text) {
    const std::string cover = directory + "/" + std::filesystem::path(path).filename().string();
    std::ofstream(cover) << text;
    return ::mount(cover.c_str(), path, nullptr, MS_BIND, nullptr) == 0;
}

bool RaiseLoopback() {
    const RawPeer socket = RawPeer::Unconnected();
    ifreq request = {};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP;
    return ::ioctl(socket.Descriptor(), SIOCSIFFLAGS, &request) == 0;
}

bool EnterOwnNames(const std::string& directory, const std::string& hostsFile,
                   const std::string& hostName, const std::string& sources) {
    return ::unshare(CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWUTS) == 0 &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 && RaiseLoopback() &&
           CoverFile(directory, "/etc/nsswitch.conf", "hosts: " + sources + "\n") &&
           CoverFile(directory, "/etc/hosts", hostsFile) &&
           ::sethostname(hostName.data(), hostName.size()) == 0;
}

}  // namespace

SceneResult RunWithNames(const std::string& hostsFile, const std::string& hostName,
                         const std::function<bool()>& scene, const std::string& sources) {
    const Support::TemporaryFolder folder;
    std::fflush(nullptr);
    const pid_t child = ::fork();
    Require(child >= 0, "fork");
    if (child == 0) {
        const bool entered = EnterOwnNames(folder.Path(), hostsFile, hostName, sources);
        const int code = !entered ? ImpossibleCode : scene() && !HasLeaks() ? 0 : 1;
        std::fflush(nullptr);
        ::_exit(code);
    }
    int status = 0;
    Require(::waitpid(child, &status, 0) == child, "waitpid");
    if (!WIFEXITED(status)) return SceneResult::Failed;
    if (WEXITSTATUS(status) == ImpossibleCode) return SceneResult::Impossible;
    return WEXITSTATUS(status) == 0 ? SceneResult::Passed : SceneResult::Failed;
}

}  // namespace Conformance

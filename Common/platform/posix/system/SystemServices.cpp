#include "Platform/System.h"
#include "Text/Utf8.h"
#include "errors/Errors.h"
#include "system/HostName.h"
#include "system/Waiting.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace {

// The texts for Winsock numbers without an equivalent among the system's; empty for all others.
std::string_view WinsockOwnDescription(WinsockError error) {
    switch (error) {
        case WinsockError::SystemNotReady:
            return "Network subsystem not ready";
        case WinsockError::VersionNotSupported:
            return "Winsock version not supported";
        case WinsockError::NotStarted:
            return "Winsock not started";
        case WinsockError::ServiceNotFound:
            return "Service not found";
        case WinsockError::HostNotFound:
            return "Host not found";
        case WinsockError::TryAgain:
            return "Temporary failure in name resolution";
        case WinsockError::NoRecovery:
            return "Unrecoverable failure in name resolution";
        case WinsockError::NoData:
            return "Host has no address of the requested kind";
        default:
            return {};
    }
}

constexpr unsigned int FirstWinsockError = 10000;

// The untranslated text; a translated one would depend on the host's locale.
std::string Description(unsigned int error) {
    const auto number = static_cast<WinsockError>(error);
    if (const std::string_view own = WinsockOwnDescription(number); !own.empty()) {
        return std::string(own);
    }
    const bool winsock = error >= FirstWinsockError;
    const int systemError = winsock ? Posix::ErrnoFromWinsock(number) : static_cast<int>(error);
    const char* text = winsock && systemError == 0 ? nullptr : ::strerrordesc_np(systemError);
    return text != nullptr ? text : "Unknown error " + std::to_string(error);
}

// Some thirty years: the clock counts nanoseconds in 64 bits.
constexpr unsigned long LongestSleep = 1'000'000'000'000;

}  // namespace

void System::Sleep(unsigned long milliseconds) {
    if (milliseconds == 0) {
        ::sched_yield();
        return;
    }
    const auto length = static_cast<long long>(std::min(milliseconds, LongestSleep));
    const timespec end = Posix::TimeFromNanoseconds(Posix::MonotonicTime() + length * 1'000'000);
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

System::WideUnits System::ComputerName() {
    Posix::HostNameText name;
    Posix::HostName(name);  // empty if there is none
    return Text::Utf16FromUtf8(name.text);
}

// Programs use it to distinguish the releases of Windows; this reports Windows 10, version 22H2.
bool System::GetVersionExW(VersionRecord* version) {
    if (version == nullptr || version->size != sizeof *version) return false;
    *version = {.size = sizeof *version,
                .majorVersion = 10,
                .minorVersion = 0,
                .buildNumber = 19045,
                .platform = 2,
                .servicePack = {}};
    return true;
}

System::WideUnits System::ErrorDescription(unsigned int error) {
    return Text::Utf16FromUtf8(Description(error));
}

System::WideUnits System::WideFromCodePage(const char* text, std::size_t length) {
    return Text::Utf16FromUtf8({text, length});
}

std::string System::CodePageFromWide(const unsigned short* units, std::size_t count) {
    return Text::Utf8FromUtf16({units, count});
}

int System::HoldCancellation() noexcept {
    int state = 0;
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    return state;
}

void System::ReleaseCancellation(int held) noexcept {
    ::pthread_setcancelstate(held, nullptr);
}

System::ErrorNumbers System::SaveErrorNumbers() noexcept {
    return {.winsock = static_cast<int>(Posix::lastError), .system = errno};
}

void System::RestoreErrorNumbers(ErrorNumbers numbers) noexcept {
    Posix::lastError = static_cast<WinsockError>(numbers.winsock);
    errno = numbers.system;
}

#include "Socket/SocketAPI.h"

#include "Platform/Winsock.h"
#include "Socket/FailureText.h"
#include "VelBase/WideLiteral.h"

#include <memory>

namespace VelNet {

using VelBase::operator""_wide;

namespace {

constexpr unsigned short WinsockVersion = 0x0202;

void StartWinsock() {
    Winsock::StartupData data = {};
    // Required (StartUpFailure.OtherVersionThanTwoTwoIsUnknownFailureWithoutCleanUp): another
    // version is a failure with the number 0, and Winsock is left started.
    const int result = Winsock::WSAStartup(WinsockVersion, &data);
    if (result == 0 && data.version == WinsockVersion && data.highestVersion == WinsockVersion)
        return;

    ThrowSystemFailure("VelNet::SocketAPI::Initialize() - FAIL."_wide,
                       "The ::WSAStartup failed"_wide, result, nullptr,
                       "Cannot initialize socket layer: %1"_format);
}

void StopWinsock() noexcept {
    if (Winsock::WSACleanup() != Winsock::SocketError) return;

    TryLogFailure("VelNet::SocketAPI::Finalize() - FAIL."_wide, "The ::WSACleanup failed"_wide,
                  Winsock::WSAGetLastError(), nullptr, "Cannot cleanup socket layer: %1"_format);
}

}  // namespace

void SocketAPI::Initialize(SocketLayerState& state) {
    std::construct_at(&state);
    try {
        StartWinsock();
    } catch (...) {
        std::destroy_at(&state);
        throw;
    }
}

void SocketAPI::Finalize(SocketLayerState& state) noexcept {
    StopWinsock();
    std::destroy_at(&state);
}

}  // namespace VelNet

#include "Endpoint.h"

#include <algorithm>
#include <charconv>

namespace VelSockTrace {

namespace {

// The unspecified address stands for one that is not known.
IpAddress KnownAddress(std::string_view host) noexcept {
    const auto address = ReadIpAddress(host);
    if (!address) return {};
    const bool isKnown = std::any_of(address->bytes.begin(), address->bytes.end(),
                                     [](unsigned char byte) { return byte != 0; });
    return isKnown ? *address : IpAddress{};
}

// A port that is no number is not known: "Random Port".
std::uint16_t KnownPort(std::string_view text) noexcept {
    std::uint16_t port = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, port);
    return error == std::errc() && end == last ? port : std::uint16_t{0};
}

std::string BytesOf(const Endpoint& end) {
    const auto& bytes = end.address.bytes;
    std::string text(bytes.begin(), bytes.end());
    text += static_cast<char>(end.address.version);
    text += static_cast<char>(end.port >> 8U);
    text += static_cast<char>(end.port & 0xFFU);
    return text;
}

// "HOST (PORT)"
Endpoint ReadEnd(std::string_view text) {
    const std::size_t bracket = text.rfind(" (");
    if (bracket == std::string_view::npos || !text.ends_with(')')) return {};
    return {text.substr(0, bracket), text.substr(bracket + 2, text.size() - bracket - 3)};
}

}  // namespace

Endpoint::Endpoint(std::string_view hostText, std::string_view portText)
    : host(hostText), address(KnownAddress(hostText)), port(KnownPort(portText)) {}

std::string Name(const Endpoint& end) {
    const std::string host = end.host.empty() ? "?" : end.host;
    const std::string port = end.port == 0 ? "?" : std::to_string(end.port);
    return (end.host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + port;
}

bool MayBeSame(const Endpoint& one, const Endpoint& other) noexcept {
    const bool areAddressesKnown = one.address.version != 0 && other.address.version != 0;
    const bool arePortsKnown = one.port != 0 && other.port != 0;
    return (!areAddressesKnown || one.address == other.address) &&
           (!arePortsKnown || one.port == other.port);
}

bool HaveInCommon(const Endpoint& one, const Endpoint& other) noexcept {
    return (one.address.version != 0 && one.address == other.address) ||
           (one.port != 0 && one.port == other.port);
}

Endpoint Completed(const Endpoint& one, const Endpoint& other) {
    Endpoint end = one;
    if (end.address.version == 0 && (other.address.version != 0 || end.host.empty())) {
        end.host = other.host;
        end.address = other.address;
    }
    if (end.port == 0) end.port = other.port;
    return end;
}

std::string ExactKey(const Endpoint& one, const Endpoint& other) {
    const std::string first = BytesOf(one);
    const std::string second = BytesOf(other);
    return first < second ? first + second : second + first;
}

Ends ReadEnds(std::string_view text) {
    static constexpr std::string_view label = ", Remote address: ";
    const std::size_t end = text.find(label);
    if (end == std::string_view::npos) return {};
    return {ReadEnd(text.substr(0, end)), ReadEnd(text.substr(end + label.size()))};
}

}  // namespace VelSockTrace

#include "FailureRecord.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace VelSockTrace {

namespace {

constexpr std::string_view ErrnoLabel = ", errno = ";

unsigned int Bits(char character) noexcept {
    return static_cast<unsigned char>(character);
}

// The log writes control characters as "\u0005".
int EscapedUnit(std::string_view text) noexcept {
    int unit = 0;
    if (text.size() < 6) return 0;
    std::from_chars(text.data() + 2, text.data() + 6, unit, 16);
    return unit;
}

// The first character of a text in UTF-8, none of which lies above U+FFFF.
int FirstUnit(std::string_view text) noexcept {
    if (text.empty()) return 0;
    if (text.starts_with("\\u")) return EscapedUnit(text);
    const unsigned int lead = Bits(text[0]);
    if (lead < 0x80) return static_cast<int>(lead);
    if (lead < 0xE0 && text.size() > 1)
        return static_cast<int>((lead & 0x1FU) << 6U | (Bits(text[1]) & 0x3FU));
    if (lead < 0xF0 && text.size() > 2)
        return static_cast<int>((lead & 0xFU) << 12U | (Bits(text[1]) & 0x3FU) << 6U |
                                (Bits(text[2]) & 0x3FU));
    return 0;
}

int NumberIn(std::string_view text) noexcept {
    const std::size_t label = text.rfind(ErrnoLabel);
    if (label == std::string_view::npos) return 0;
    const int unit = FirstUnit(text.substr(label + ErrnoLabel.size()));
    return unit == 0xFFFF ? -1 : unit;
}

std::string Composed(std::string_view host, std::string_view port) {
    return std::string(host).append(" (").append(port) += ')';
}

// "127.0.0.1:4000"
std::string EndFrom(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) return {};
    return Composed(text.substr(0, colon), text.substr(colon + 1));
}

// A host that does not resolve is told with its port alone: "nosuch.invalid : 80".
bool IsNameOfHost(std::string_view first, std::string_view second) noexcept {
    return !first.empty() && !second.empty() && first.find(':') == std::string_view::npos &&
           second.find(':') == std::string_view::npos;
}

std::string Joined(const std::string& local, const std::string& remote) {
    return local + ", Remote address: " + remote;
}

// An extended socket's: "FUNCTION , DESCRIPTION , CALL , LOCAL : REMOTE , errno = ".
std::string ExtendedEnds(std::string_view text) {
    const std::size_t last = text.rfind(" , errno = ");
    if (last == std::string_view::npos) return {};
    const std::string_view before = text.substr(0, last);
    const std::size_t begin = before.rfind(" , ");
    if (begin == std::string_view::npos) return {};
    const std::string_view ends = before.substr(begin + 3);
    const std::size_t middle = ends.find(" : ");
    if (middle == std::string_view::npos) return {};
    const std::string_view first = ends.substr(0, middle);
    const std::string_view second = ends.substr(middle + 3);
    if (IsNameOfHost(first, second)) return Joined(" ()", Composed(first, second));
    const std::string local = EndFrom(first);
    const std::string remote = EndFrom(second);
    return local.empty() || remote.empty() ? std::string() : Joined(local, remote);
}

// A classic socket's: "... Cannot connect to a socket: 127.0.0.1:1, errno = ".
std::string ClassicEnds(std::string_view text) {
    static constexpr std::string_view label = "Cannot connect to a socket: ";
    const std::size_t begin = text.find(label);
    const std::size_t end = text.rfind(ErrnoLabel);
    if (begin == std::string_view::npos || end == std::string_view::npos ||
        end < begin + label.size())
        return {};
    const std::size_t address = begin + label.size();
    return Joined(" ()", EndFrom(text.substr(address, end - address)));
}

}  // namespace

FailureRecord ReadFailure(std::string_view text) {
    FailureRecord failure;
    failure.number = NumberIn(text);
    failure.isEnd = text.find("could not be completed because the connection has been closed") !=
                    std::string_view::npos;
    const bool isExtended = text.starts_with("VelNet::SocketXt");
    if (failure.isEnd) failure.number = 0;
    failure.isConnecting = text.starts_with("VelNet::SocketImpl::Connect()") ||
                           text.starts_with("VelNet::SocketXtImpl::Connect ");
    failure.isTransfer = text.starts_with("VelNet::SocketImpl::Send()") ||
                         text.starts_with("VelNet::SocketImpl::Receive()") ||
                         text.starts_with("VelNet::SocketXtImpl::Send ") ||
                         text.starts_with("VelNet::SocketXtImpl::Receive ");
    failure.ends = isExtended ? ExtendedEnds(text) : ClassicEnds(text);
    return failure;
}

bool IsLoss(int number) noexcept {
    static constexpr std::array losses{10050, 10051, 10052, 10053, 10054, 10064, 10065};
    return std::find(losses.begin(), losses.end(), number) != losses.end();
}

}  // namespace VelSockTrace

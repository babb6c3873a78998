#include "Pcapng.h"

namespace VelSockTrace {

namespace {

constexpr std::uint32_t SectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t InterfaceDescription = 1;
constexpr std::uint32_t EnhancedPacket = 6;
constexpr std::uint16_t RawIp = 101;
constexpr std::uint16_t Comment = 1;
constexpr std::uint16_t Application = 4;
// An option's length has 16 bits.
constexpr std::size_t MostOfOption = 0xFFF0;

// In little-endian order.
template <class Number>
void Put(std::string& bytes, Number number) {
    for (std::size_t index = 0; index < sizeof number; ++index)
        bytes += static_cast<char>(number >> (8 * index) & 0xFF);
}

void PutPadded(std::string& bytes, std::string_view content) {
    bytes += content;
    bytes.append((4 - content.size() % 4) % 4, '\0');
}

// The option, and the end of the options.
void PutOption(std::string& bytes, std::uint16_t code, std::string_view value) {
    value = value.substr(0, MostOfOption);
    Put(bytes, code);
    Put(bytes, static_cast<std::uint16_t>(value.size()));
    PutPadded(bytes, value);
    Put(bytes, std::uint32_t{0});
}

}  // namespace

Pcapng::Pcapng(const std::string& path) : file_(path) {
    std::string section;
    Put(section, std::uint32_t{0x1A2B3C4D});
    Put(section, std::uint16_t{1});
    Put(section, std::uint16_t{0});
    Put(section, ~std::uint64_t{0});  // the length is not told
    PutOption(section, Application, "velsock-trace " VELSOCK_TOOL_VERSION);
    WriteBlock(SectionHeader, section);

    std::string description;
    Put(description, RawIp);
    Put(description, std::uint16_t{0});
    Put(description, std::uint32_t{0});  // packets of any length
    WriteBlock(InterfaceDescription, description);
}

void Pcapng::Write(std::int64_t time, std::string_view packet, const std::string& comment) {
    std::string body;
    body.reserve(packet.size() + comment.size() + 40);
    const auto bits = static_cast<std::uint64_t>(time);
    Put(body, std::uint32_t{0});  // the interface
    Put(body, static_cast<std::uint32_t>(bits >> 32U));
    Put(body, static_cast<std::uint32_t>(bits));
    Put(body, static_cast<std::uint32_t>(packet.size()));
    Put(body, static_cast<std::uint32_t>(packet.size()));
    PutPadded(body, packet);
    if (!comment.empty()) PutOption(body, Comment, comment);
    WriteBlock(EnhancedPacket, body);
}

// The length stands at both ends, so that a file can be read backwards.
void Pcapng::WriteBlock(std::uint32_t type, std::string_view body) {
    const auto length = static_cast<std::uint32_t>(body.size() + 12);
    std::string frame;
    Put(frame, type);
    Put(frame, length);
    frame += body;
    Put(frame, length);
    file_.Write(frame);
}

}  // namespace VelSockTrace

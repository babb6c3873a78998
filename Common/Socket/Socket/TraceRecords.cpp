#include "Socket/TraceRecords.h"

#include "Text/Ascii.h"
#include "Text/HexDigit.h"
#include "VelLog/LogMessage.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace VelNet {

namespace {

void Feed(const TraceEndpoints& endpoints, VelResource::MessageFormatter& formatter) {
    formatter.SetConnection(endpoints.Connection());
    endpoints.FeedTo(formatter);
}

void WritePlainRecord(VelLog::Router& router, LogFormat format, int count,
                      const TraceEndpoints& endpoints) {
    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    formatter.AddInteger(count);
    Feed(endpoints, formatter);
    WriteRecord(router, format, formatter);
}

void WriteRecordWithData(VelLog::Router& router, LogFormat format, const char* data, int count,
                         const TraceEndpoints& endpoints) {
    const VelBase::ReturnString bytes = FormatTraceBytes(data, static_cast<unsigned int>(count));
    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    formatter.AddInteger(count);
    Feed(endpoints, formatter);
    formatter.AddNarrowText(bytes.c_str());
    WriteRecord(router, format, formatter);
}

// The last two digits of each byte. From 0x80 on, digits of the sign extension precede them.
consteval auto MakeByteDigits() {
    std::array<std::array<char, 2>, 256> digits{};
    for (unsigned int byte = 0; byte < digits.size(); ++byte)
        digits[byte] = {Text::HexDigit(byte >> 4), Text::HexDigit(byte)};
    return digits;
}
constexpr auto ByteDigits = MakeByteDigits();
constexpr std::size_t SignDigits = 6;

// Returns where the next byte goes.
char* PutHexadecimal(char* digits, char byte) noexcept {
    const auto bits = static_cast<unsigned char>(byte);
    if (bits > 0x7F) digits = std::fill_n(digits, SignDigits, 'F');
    return std::copy_n(ByteDigits[bits].data(), 2, digits);
}

}  // namespace

void WriteConnectionRecord(VelLog::Router& router, LogFormat format,
                           const TraceEndpoints& endpoints) {
    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    Feed(endpoints, formatter);
    WriteRecord(router, format, formatter);
}

void WriteTransferRecords(const TransferFormats& formats, const char* data, int count,
                          const TraceEndpoints& endpoints) {
    if (VelLog::Router* const router = EnabledRouter(&SocketLayerState::packetTraceRouter)) {
        WritePlainRecord(*router, formats.plain, count, endpoints);
    }
    if (VelLog::Router* const router = EnabledRouter(&SocketLayerState::verbosePacketTraceRouter)) {
        WriteRecordWithData(*router, formats.withData, data, count, endpoints);
    }
}

VelBase::ReturnString FormatTraceBytes(const char* data, unsigned int count) {
    const std::string_view bytes(data, count);
    std::string text;
    text.reserve(2 * bytes.size() + 1);
    text.resize((Text::IsAscii(bytes) ? 2 : 2 + SignDigits) * bytes.size());
    char* end = text.data();
    for (const char byte : bytes)
        end = PutHexadecimal(end, byte);
    *end = '\0';
    return {text.c_str()};
}

}  // namespace VelNet

#include "Socket/TraceRecords.h"

#include "Text/HexDigit.h"
#include "VelLog/LogMessage.h"

#include <string>

namespace VelNet {

namespace {

void WritePlainRecord(VelLog::Router& router, LogFormat format, int count,
                      const TraceEndpoints& endpoints) {
    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    formatter.AddInteger(count);
    endpoints.FeedTo(formatter);
    WriteRecord(router, format, formatter);
}

void WriteRecordWithData(VelLog::Router& router, LogFormat format, const char* data, int count,
                         const TraceEndpoints& endpoints) {
    const VelBase::ReturnString bytes = FormatTraceBytes(data, static_cast<unsigned int>(count));
    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    formatter.AddInteger(count);
    endpoints.FeedTo(formatter);
    formatter.AddNarrowText(bytes.c_str());
    WriteRecord(router, format, formatter);
}

void AppendWidened(std::string& text, char byte) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): the sign is meant to spread.
    const int widened = static_cast<signed char>(byte);
    for (int shift = widened < 0 ? 28 : 4; shift >= 0; shift -= 4)
        text += Text::HexDigit(static_cast<unsigned int>(widened) >> shift);
}

}  // namespace

void WriteConnectionRecord(VelLog::Router& router, LogFormat format,
                           const TraceEndpoints& endpoints) {
    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    endpoints.FeedTo(formatter);
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
    std::string text;
    text.reserve(2 * static_cast<std::size_t>(count) + 1);
    for (unsigned int index = 0; index < count; ++index)
        AppendWidened(text, data[index]);
    return {text.c_str()};
}

}  // namespace VelNet

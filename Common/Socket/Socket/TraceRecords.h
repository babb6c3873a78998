// The trace records: their formats, and when each is written.
#pragma once

#include "Socket/LogFormat.h"
#include "Socket/SocketLayerState.h"
#include "VelBase/ReturnString.h"
#include "VelLog/Router.h"
#include "VelResource/MessageFormatter.h"

namespace VelNet {

inline constexpr LogFormat ConnectedFormat =
    "Connected, Local address: %1 (%2), Remote address: %3 (%4)"_format;
inline constexpr LogFormat DisconnectedFormat =
    "Disconnected, Local address: %1 (%2), Remote address: %3 (%4)"_format;

// The formats of a transfer's record for "Packet Trace" and of the one with the bytes for "Verbose
// Packet Trace".
struct TransferFormats {
    LogFormat plain;
    LogFormat withData;
};

inline constexpr TransferFormats SentFormats = {
    "Sent %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)"_format,
    "Sent %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"_format,
};
inline constexpr TransferFormats ReceivedFormats = {
    "Received %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)"_format,
    "Received %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"_format,
};
inline constexpr TransferFormats SendtoFormats = {
    "Sendto %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)"_format,
    "Sendto %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"_format,
};
inline constexpr TransferFormats RecvfromFormats = {
    "Recvfrom %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)"_format,
    "Recvfrom %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"_format,
};

// The endpoints of a record, and the number of the connection between them. Each socket class feeds
// the endpoints in its own form: local address, local port, remote address, remote port.
class TraceEndpoints {
public:
    virtual void FeedTo(VelResource::MessageFormatter& formatter) const = 0;

    unsigned int Connection() const noexcept { return connection_; }

protected:
    explicit TraceEndpoints(unsigned int connection) noexcept : connection_(connection) {}
    TraceEndpoints(const TraceEndpoints&) = default;
    TraceEndpoints& operator=(const TraceEndpoints&) = default;
    ~TraceEndpoints() = default;

private:
    unsigned int connection_;
};

// Writes a Connected or Disconnected record. The caller has checked that the router is on.
void WriteConnectionRecord(VelLog::Router& router, LogFormat format,
                           const TraceEndpoints& endpoints);

// Writes the plain record, then the one with the first count bytes of the data, each if its router
// is on.
void WriteTransferRecords(const TransferFormats& formats, const char* data, int count,
                          const TraceEndpoints& endpoints);

// Write what the routers ask for, with the endpoints that the given function returns. The operation
// has already succeeded, so a failure here, such as exhausted memory, only loses the record. The
// endpoints are copies, since the sink may use the very socket that they belong to.
template <class MakeEndpoints>
void TryWriteConnectionRecord(LogFormat format, MakeEndpoints makeEndpoints) noexcept {
    VelLog::Router* const router = EnabledRouter(&SocketLayerState::connectionTraceRouter);
    if (router == nullptr) return;
    try {
        WriteConnectionRecord(*router, format, makeEndpoints());
    } catch (...) {
        return;
    }
}

// Returns the count.
template <class MakeEndpoints>
int TryWriteTransferRecords(const TransferFormats& formats, const char* data, int count,
                            MakeEndpoints makeEndpoints) noexcept {
    if (!IsAnyPacketTraceEnabled()) [[likely]]
        return count;
    try {
        WriteTransferRecords(formats, data, count, makeEndpoints());
    } catch (...) {
        return count;
    }
    return count;
}

// Returns all bytes in hexadecimal without separators.
//
// Required (FormatTraceBytesText.EachByteAloneHasTwoOrEightDigits): each byte is sign-extended, so
// that 0x80 to 0xFF give eight digits ("FFFFFF80") and all others two.
VelBase::ReturnString FormatTraceBytes(const char* data, unsigned int count);

}  // namespace VelNet

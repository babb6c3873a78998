// The two ends in the records of the classic socket.
#pragma once

#include "Socket/AddressWriter.h"
#include "Socket/TraceRecords.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

// The stored addresses of a socket, formatted once for all records of a call.
class ClassicEndpoints final : public TraceEndpoints {
public:
    ClassicEndpoints(unsigned int connection, const SocketAddress& local,
                     const SocketAddress& remote) noexcept
        : TraceEndpoints(connection),
          localAddress_(AddressWriter::Dotted(local)),
          localPort_(local.GetPort()),
          remoteAddress_(AddressWriter::Dotted(remote)),
          remotePort_(remote.GetPort()) {}

    void FeedTo(VelResource::MessageFormatter& formatter) const override {
        formatter.AddNarrowText(localAddress_.text)
            .AddInteger(localPort_)
            .AddNarrowText(remoteAddress_.text)
            .AddInteger(remotePort_);
    }

private:
    DottedText localAddress_;
    int localPort_;
    DottedText remoteAddress_;
    int remotePort_;
};

}  // namespace VelNet

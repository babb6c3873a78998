// The two ends in the records of the classic socket.
#pragma once

#include "Socket/TraceRecords.h"
#include "VelBase/ReturnString.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

// The stored addresses of a socket, formatted once for all records of a call.
class ClassicEndpoints final : public TraceEndpoints {
public:
    ClassicEndpoints(unsigned int connection, const SocketAddress& local,
                     const SocketAddress& remote)
        : TraceEndpoints(connection),
          localAddress_(local.GetOctets().GetAddressString()),
          localPort_(local.GetPort()),
          remoteAddress_(remote.GetOctets().GetAddressString()),
          remotePort_(remote.GetPort()) {}

    void FeedTo(VelResource::MessageFormatter& formatter) const override {
        formatter.AddNarrowText(localAddress_.c_str())
            .AddInteger(localPort_)
            .AddNarrowText(remoteAddress_.c_str())
            .AddInteger(remotePort_);
    }

private:
    VelBase::ReturnString localAddress_;
    int localPort_;
    VelBase::ReturnString remoteAddress_;
    int remotePort_;
};

}  // namespace VelNet

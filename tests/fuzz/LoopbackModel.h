// What a model of classic sockets over the loopback interface remembers.
#pragma once

#include <VelLog/LogControl.h>
#include <VelNet/Socket.h>

#include <deque>
#include <memory>

#include "SocketTexts.h"
#include "support/Text.h"

namespace Fuzz {

enum class State { Closed, Created, Bound, Listening, Connected };

// One end of a stream: what has arrived and is not received, and how the other end is.
struct End {
    std::string waiting;
    bool isPeerClosed = false;
    bool isReset = false;
    std::weak_ptr<End> peer;
};

// A socket, and what is known of it.
struct Slot {
    VelBase::ReturnPtrI<VelNet::Socket> socket;
    State state = State::Closed;
    bool isDatagram = false;
    bool isNonBlocking = false;
    int port = 0;                              // 0 while it is not bound
    Endpoint local, remote;                    // as stored
    std::shared_ptr<End> end;                  // of a connected stream
    std::deque<std::shared_ptr<End>> clients;  // pending
    std::deque<int> clientPorts;
    std::deque<std::string> datagrams;
    int peerPort = 0;
};

// Takes all records of all routers.
class Recorder final : public VelLog::LogSink {
public:
    Recorder() {
        VelLog::SetSink(this);
        for (const char* const category :
             {VelLog::CATEGORY_ERROR, VelLog::CATEGORY_CONNECTION_TRACE,
              VelLog::CATEGORY_PACKET_TRACE, VelLog::CATEGORY_VERBOSE_PACKET_TRACE})
            VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, true);
    }
    ~Recorder() override { VelLog::SetSink(nullptr); }

    void Write(const VelLog::LogRecord& record) override {
        log.emplace_back(record.category, Support::Text(record.text));
    }

    Log log;
};

}  // namespace Fuzz

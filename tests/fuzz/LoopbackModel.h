// What models of sockets over the loopback interface have in common.
#pragma once

#include <VelLog/LogControl.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketCollection.h>

#include <deque>
#include <memory>
#include <utility>

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

    bool HasLostPeer() const { return isPeerClosed || isReset; }
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

class LoopbackModel {
public:
    explicit LoopbackModel(Input input) : input_(input) {}

    // The records since the last comparison.
    void Compare() {
        Expect("the records", log_, recorder_.log);
        log_.clear();
        recorder_.log.clear();
    }

protected:
    static constexpr unsigned int LongestWait = 60;  // seconds

    static void WaitUntilReadable(VelNet::Socket& socket) {
        VelNet::SocketCollection* const set = VelNet::CreateSocketCollection();
        set->Add(&socket, VelNet::EVENT_READ);
        VelNet::SocketCollection* const ready = set->Select(LongestWait);
        Expect("whether there is something to read", true, ready != nullptr);
        ready->Destroy();
        set->Destroy();
    }

    // The end of a socket that has connected, and that of the socket which is going to be accepted.
    static std::pair<std::shared_ptr<End>, std::shared_ptr<End>> NewStream() {
        const auto end = std::make_shared<End>();
        const auto other = std::make_shared<End>();
        end->peer = other;
        other->peer = end;
        return {end, other};
    }

    // The other end learns of an end with bytes that nobody received as of a reset.
    static void Part(const End& end, bool isPending) {
        const std::shared_ptr<End> peer = end.peer.lock();
        if (!peer) return;
        const bool resets = !end.waiting.empty() || isPending;
        (resets ? peer->isReset : peer->isPeerClosed) = true;
    }

    // How a socket that goes away parts from whoever is connected to it.
    template <class Slot>
    static void PartFromAll(const Slot& slot) {
        if (slot.end && !slot.end->waiting.empty()) WaitUntilReadable(*slot.socket);
        if (slot.end) Part(*slot.end, false);
        if (!slot.clients.empty()) WaitUntilReadable(*slot.socket);
        for (const auto& client : slot.clients)
            Part(*client, true);
    }

    // A backlog of two holds two; what becomes of a third is the system's affair.
    template <class Slot>
    static bool HasRoom(const Slot& listener) {
        return listener.state == State::Listening && listener.clients.size() < 2;
    }

    void Record(const LogLine& line) { log_.push_back(line); }
    void Record(const Log& lines) { log_.insert(log_.end(), lines.begin(), lines.end()); }

    // What an operation throws, which it has logged; error 0 stands for nothing.
    Thrown Failing(const std::string& labelAndDescription, int error) {
        if (error == 0) return {};
        const Thrown failure = FailureOf(labelAndDescription, error);
        Record(ErrorLine(failure));
        return failure;
    }

    Input input_;

private:
    Recorder recorder_;
    Log log_;
};

}  // namespace Fuzz

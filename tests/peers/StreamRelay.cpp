// Passes on what many clients and a server say to each other, until the standard input has a
// line, and then says what it was.
//
//   peer_stream_relay ipv4|ipv6 PORT HOST SERVER_PORT
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "RelayedConnection.h"
#include "Words.h"

namespace {

using Peers::RelayedConnection;
using SocketOwner = RelayedConnection::SocketOwner;

class Relay {
public:
    Relay(const char* family, const char* port, const char* host, const char* serverPort)
        : family_(Peers::FamilyFrom(family)),
          host_(host),
          serverPort_(serverPort),
          listener_(Peers::Stream(family_)) {
        listener_->Bind(VelNet::SPECIAL_ANY, port);
        listener_->Listen();
    }

    // Until End.
    void Serve() {
        while (SocketOwner client = Next())
            std::thread([this, taken = Take(client)]() mutable {
                Pass(std::move(taken));
            }).detach();
    }

    // No client is taken any more, and those that are there are left.
    void End() {
        isEnding_ = true;
        listener_->Close();
        std::unique_lock lock(mutex_);
        for (RelayedConnection* const connection : running_)
            connection->End();
        allLeft_.wait(lock, [this] { return present_ == 0; });
    }

    void Tell() const {
        std::printf(
            "%llu connections, %llu refused, %llu lost, %llu surprises, %llu bytes of questions, "
            "%llu bytes of answers\n",
            totals_.connections.load(), totals_.refused.load(), totals_.lost.load(),
            totals_.surprises.load(), totals_.questions.load(), totals_.answers.load());
    }

private:
    // Empty when there is no listener any more. A client that has given up before it was accepted
    // is no reason to end.
    SocketOwner Next() {
        SocketOwner client;
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        while (!client && !isEnding_) {
            try {
                listener_->Accept(client, host, port);
            } catch (const VelNet::Exception& failure) {
                if (!isEnding_) Note(failure);
            }
        }
        return client;
    }

    SocketOwner Take(SocketOwner& client) {
        const std::lock_guard lock(mutex_);
        ++present_;
        ++totals_.connections;
        return std::move(client);
    }

    void Pass(SocketOwner client) noexcept {
        TryToPass(std::move(client));
        const std::lock_guard lock(mutex_);
        if (--present_ == 0) allLeft_.notify_all();
    }

    // All sockets are closed when it returns.
    void TryToPass(SocketOwner client) noexcept {
        const SocketOwner taken = std::move(client);
        try {
            SocketOwner server = Peers::Stream(family_);
            server->Connect(host_.c_str(), serverPort_.c_str());
            Run(VelCompanion::Share(taken), std::move(server));
        } catch (const VelNet::Exception& failure) {
            ++totals_.refused;
            Note(failure);
        } catch (const std::exception& failure) {
            ++totals_.surprises;
            std::fprintf(stderr, "%s\n", failure.what());
        }
    }

    void Run(SocketOwner client, SocketOwner server) {
        RelayedConnection connection(std::move(client), std::move(server), totals_);
        Enter(connection);
        connection.Run();
        const std::lock_guard lock(mutex_);
        running_.erase(&connection);
    }

    void Enter(RelayedConnection& connection) {
        const std::lock_guard lock(mutex_);
        running_.insert(&connection);
        if (isEnding_) connection.End();
    }

    static void Note(const VelNet::Exception& failure) noexcept {
        std::fprintf(stderr, "%s\n", VelCompanion::Describe(failure).c_str());
    }

    VelNet::SocketXt::ADDR_FAMILY family_;
    std::string host_;
    std::string serverPort_;
    SocketOwner listener_;
    Peers::Totals totals_;
    std::atomic<bool> isEnding_ = false;
    std::mutex mutex_;
    std::condition_variable allLeft_;
    std::set<RelayedConnection*> running_;
    unsigned int present_ = 0;
};

}  // namespace

int main(int count, char** words) try {
    if (count != 5) {
        std::fputs("usage: peer_stream_relay ipv4|ipv6 PORT HOST SERVER_PORT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    Relay relay(words[1], words[2], words[3], words[4]);
    std::thread serving([&] { relay.Serve(); });
    Peers::AwaitLineOfInput();
    relay.End();
    serving.join();
    relay.Tell();
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

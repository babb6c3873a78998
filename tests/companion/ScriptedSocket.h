// A socket that is not the library's and transfers what a test says: a byte at a time, for
// instance.
#pragma once

#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelSynch/ReferenceCountedImpl.h>
#include <support/Text.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

namespace Companion {

class ScriptedSocket : public VelNet::Socket, public VelSynch::ReferenceCountedImpl<int> {
public:
    bool IsSameSocket(const VelNet::Socket& other) const override { return this == &other; }
    bool SetNonBlocking() override { return true; }
    bool IsValid() const override { return true; }
    void Bind(VelNet::Octets, unsigned short) override {}
    int Listen() override { return 0; }
    void Connect(VelNet::Octets, unsigned short) override {}
    VelBase::ReturnPtrI<VelNet::Socket> Accept(VelNet::SocketAddress&) override { return {}; }
    void SetReceiveTimeout(unsigned int) override {}
    void SetSendTimeout(unsigned int milliseconds) override { timeouts.push_back(milliseconds); }
    void SetReuseAddress() override {}
    void Close() override {}

    // The next part, or its beginning if there is no room for it; at the end, the failure.
    int Receive(char* buffer, int length) override {
        lengths.push_back(length);
        if (parts.empty()) throw VelNet::Exception(Support::Wide(end.c_str()).data(), endCode);
        std::string part = parts.front();
        parts.pop_front();
        const auto count = std::min(part.size(), static_cast<std::size_t>(length));
        std::copy_n(part.begin(), count, buffer);
        if (count < part.size()) parts.push_front(part.substr(count));
        return static_cast<int>(count);
    }

    // As many bytes as are accepted at a time.
    int Send(const char* buffer, int length) override {
        if (sent.size() >= mostSent)
            throw VelNet::Exception(Support::Wide("lost").data(), VelNet::SOCKET_ERR_CONNRESET);
        const int count = std::min(length, accepted);
        sent.append(buffer, static_cast<std::size_t>(count));
        return count;
    }

    bool IsDataAvailable() const override { return !parts.empty(); }
    VelNet::SocketAddress GetLocalAddress() const override { return {}; }
    VelNet::SocketAddress GetRemoteAddress() const override { return {}; }
    int GetStatus() const override { return VelNet::STATUS_IDLE; }

    std::deque<std::string> parts;
    std::string end = "completed because the connection has been closed.";
    VelNet::SOCKET_ERR endCode = VelNet::SOCKET_ERR_UNKNOWN;
    std::vector<int> lengths;

    int accepted = 1;
    std::size_t mostSent = 1000000;
    std::string sent;
    std::vector<unsigned int> timeouts;
};

}  // namespace Companion

// A socket that is not the library's and transfers what a test says: a byte at a time, for
// instance.
#pragma once

#include <VelNet/Exception.h>
#include <support/ForeignSocket.h>
#include <support/Text.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

namespace Companion {

class ScriptedSocket : public Support::ForeignSocket {
public:
    void SetSendTimeout(unsigned int milliseconds) override { timeouts.push_back(milliseconds); }

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

// Stores values of many lengths in a Redis server, several requests at a time, and compares what
// the server gives back.
//
//   peer_redis_load ipv4|ipv6 HOST PORT COUNT
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "Words.h"

namespace {

constexpr std::size_t LongestLine = 1024;
constexpr std::size_t LongestValue = 70000;  // longer than a block of the relay

std::string Word(const std::string& text) {
    std::string word = "$";
    return word.append(std::to_string(text.size())).append("\r\n").append(text).append("\r\n");
}

class Client {
public:
    Client(const char* family, const char* host, const char* port)
        : socket_(Peers::Stream(Peers::FamilyFrom(family))) {
        socket_->Connect(host, port);
    }

    void Store(const std::vector<std::string>& values) {
        std::string requests;
        for (std::size_t index = 0; index < values.size(); ++index)
            requests += "*3\r\n" + Word("SET") + Word(std::to_string(index)) + Word(values[index]);
        VelCompanion::SendAll(*socket_, requests, Peers::Patience);
        for (std::size_t index = 0; index < values.size(); ++index)
            if (Line() != "+OK") throw std::runtime_error("a value was not stored");
    }

    void Compare(const std::vector<std::string>& values) {
        std::string requests;
        for (std::size_t index = 0; index < values.size(); ++index)
            requests += "*2\r\n" + Word("GET") + Word(std::to_string(index));
        VelCompanion::SendAll(*socket_, requests, Peers::Patience);
        for (const std::string& value : values)
            if (Value() != value) throw std::runtime_error("a value differs");
    }

private:
    std::string Line() {
        auto line = VelCompanion::ReceiveLine(*socket_, come_, LongestLine, Peers::Patience);
        if (!line) throw std::runtime_error("the server has ended the connection");
        return *line;
    }

    std::string Value() {
        const std::size_t length = std::stoul(Line().substr(1)) + 2;
        std::string value = come_.substr(0, length);
        come_.erase(0, value.size());
        value += VelCompanion::ReceiveExactly(*socket_, length - value.size(), Peers::Patience);
        return value.substr(0, length - 2);
    }

    VelBase::ReturnPtrI<VelNet::SocketXt> socket_;
    std::string come_;
};

// The same in each run.
std::string Value(std::minstd_rand& random) {
    std::string value(random() % LongestValue, '\0');
    for (char& byte : value)
        byte = static_cast<char>(random() & 0xFFU);
    return value;
}

}  // namespace

int main(int count, char** words) try {
    if (count != 5) {
        std::fputs("usage: peer_redis_load ipv4|ipv6 HOST PORT COUNT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    Client client(words[1], words[2], words[3]);
    std::minstd_rand random;
    unsigned long long bytes = 0;
    for (int left = std::stoi(words[4]); left > 0; --left) {
        const std::vector<std::string> values{Value(random), Value(random), "", Value(random)};
        client.Store(values);
        client.Compare(values);
        for (const std::string& value : values)
            bytes += value.size();
    }
    std::printf("%d values of %llu bytes\n", 4 * std::stoi(words[4]), bytes);
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

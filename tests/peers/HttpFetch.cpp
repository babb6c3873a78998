// Asks a web server for the same page again and again over one connection, and compares each body
// with a file.
//
//   peer_http_fetch ipv4|ipv6 HOST PORT PATH FILE COUNT
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "Words.h"

namespace {

constexpr std::size_t LongestLine = 8192;

std::string ContentsOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("the file cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

class Client {
public:
    Client(const char* family, const char* host, const char* port)
        : socket_(Peers::Stream(Peers::FamilyFrom(family))) {
        socket_->Connect(host, port);
    }

    std::string Fetch(const std::string& path) {
        VelCompanion::SendAll(*socket_, "GET " + path + " HTTP/1.1\r\nHost: peer\r\n\r\n",
                              Peers::Patience);
        if (Line() != "HTTP/1.1 200 OK") throw std::runtime_error("the server has no such page");
        return Body(LengthFromHeaders());
    }

private:
    std::string Line() {
        auto line = VelCompanion::ReceiveLine(*socket_, come_, LongestLine, Peers::Patience);
        if (!line) throw std::runtime_error("the server has ended the connection");
        return *line;
    }

    std::size_t LengthFromHeaders() {
        static const std::string name = "Content-Length: ";
        std::size_t length = 0;
        for (std::string line = Line(); !line.empty(); line = Line())
            if (line.starts_with(name)) length = std::stoul(line.substr(name.size()));
        return length;
    }

    std::string Body(std::size_t length) {
        std::string body = come_.substr(0, length);
        come_.erase(0, body.size());
        return body + VelCompanion::ReceiveExactly(*socket_, length - body.size(), Peers::Patience);
    }

    VelBase::ReturnPtrI<VelNet::SocketXt> socket_;
    std::string come_;
};

}  // namespace

int main(int count, char** words) try {
    if (count != 7) {
        std::fputs("usage: peer_http_fetch ipv4|ipv6 HOST PORT PATH FILE COUNT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const std::string expected = ContentsOf(words[5]);
    const int times = std::stoi(words[6]);
    Client client(words[1], words[2], words[3]);
    for (int time = 0; time < times; ++time)
        if (client.Fetch(words[4]) != expected) throw std::runtime_error("a body differs");
    std::printf("%d bodies of %zu bytes\n", times, expected.size());
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

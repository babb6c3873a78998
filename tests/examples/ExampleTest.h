// What the tests of the examples share: the layer, free ports, peers whose waits are bounded.
#pragma once

#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>
#include <examples/Program.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace Examples {

using SocketPtr = VelBase::ReturnPtrI<VelNet::Socket>;

class ExampleTest : public testing::Test {
private:
    const VelNet::SocketInitialization layer_;
};

// A program that listens on a port that it was given. The port was free a moment ago; if it has
// been taken since, the program ends and is started with another.
class Server {
public:
    // The words behind the port. The program says the announcement when it listens.
    Server(const std::string& name, VelNet::Socket::SOCKET_TYPE type,
           const std::vector<std::string>& words, const std::string& announcement);

    const std::string& Port() const { return port_; }
    Program& operator*() { return *program_; }
    Program* operator->() { return program_.get(); }

private:
    std::string port_;
    std::unique_ptr<Program> program_;
};

// The loopback address of the IP version that extended sockets have here. "localhost" may have the
// other one alone.
std::string LoopbackHost();

// The number at the end of a line.
std::string PortIn(const std::string& announcement);

// A stream on 127.0.0.1 whose transfers last a minute at most.
SocketPtr Listening();
SocketPtr ConnectedTo(const std::string& port);
SocketPtr AcceptedFrom(VelNet::Socket& listener);
std::string PortOf(const VelNet::Socket& socket);

void SendAll(VelNet::Socket& socket, const std::string& text);
std::string ReceiveExactly(VelNet::Socket& socket, std::size_t count);
// The code with which a receive call fails.
int CodeOfReceive(VelNet::Socket& socket);

// A server for one client of the IP version that extended sockets have here.
class FakeServer {
public:
    FakeServer();

    std::string Port() const;
    // Accepts, waits for a request that ends so, answers, and closes. Returns the request.
    std::string Serve(const std::string& requestEnd, const std::string& answer);

private:
    VelBase::ReturnPtrI<VelNet::SocketXt> listener_;
};

}  // namespace Examples

// What an agent keeps between commands: its sockets by name, and the records of the library.
#pragma once

#include <VelLog/LogSink.h>
#include <VelNet/SocketXt.h>

#include <map>
#include <string>
#include <vector>

namespace Network {

// Keeps the library's records until they are asked for.
class Recorder : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord& record) override;

    // All records since the last time, each as "Category: text".
    std::vector<std::string> Take();

private:
    std::vector<std::string> records_;
};

// A socket of either family, with how far its two byte streams have come.
struct NamedSocket {
    VelBase::ReturnPtrI<VelNet::Socket> socket;
    VelBase::ReturnPtrI<VelNet::SocketXt> extended;  // empty for a classic socket
    unsigned long long sent = 0;
    unsigned long long received = 0;
};

class Host {
public:
    NamedSocket& Add(const std::string& name, VelBase::ReturnPtrI<VelNet::Socket> socket);
    NamedSocket& Add(const std::string& name, VelBase::ReturnPtrI<VelNet::SocketXt> socket);

    // Both throw std::runtime_error when there is none.
    NamedSocket& Find(const std::string& name);
    VelNet::SocketXt& FindExtended(const std::string& name);

    Recorder& Records() noexcept { return recorder_; }

private:
    Recorder recorder_;
    std::map<std::string, NamedSocket> sockets_;
};

}  // namespace Network

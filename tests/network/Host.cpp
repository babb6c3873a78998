#include "Host.h"

#include <stdexcept>
#include <utility>

#include "support/Text.h"

namespace Network {

void Recorder::Write(const VelLog::LogRecord& record) {
    records_.push_back(std::string(record.category) + ": " + Support::Narrow(record.text));
}

std::vector<std::string> Recorder::Take() {
    return std::exchange(records_, {});
}

NamedSocket& Host::Add(const std::string& name, VelBase::ReturnPtrI<VelNet::Socket> socket) {
    NamedSocket& added = sockets_[name] = {};
    added.socket = std::move(socket);
    return added;
}

NamedSocket& Host::Add(const std::string& name, VelBase::ReturnPtrI<VelNet::SocketXt> socket) {
    NamedSocket& added = Add(name, VelBase::ReturnPtrI<VelNet::Socket>(socket.Get()));
    added.extended = std::move(socket);
    return added;
}

NamedSocket& Host::Find(const std::string& name) {
    const auto found = sockets_.find(name);
    if (found == sockets_.end()) throw std::runtime_error("no socket is named " + name);
    return found->second;
}

VelNet::SocketXt& Host::FindExtended(const std::string& name) {
    const NamedSocket& found = Find(name);
    if (!found.extended) throw std::runtime_error(name + " is a classic socket");
    return *found.extended;
}

}  // namespace Network

// A connection's whole life within this thread: connected, accepted, both ends closed.

#include <unistd.h>

#include "Rows.h"
#include "Scenes.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"

namespace Bench {
namespace {

class RawConnection : public ConnectionScene {
public:
    int Do() const {
        const int client = ::socket(AF_INET, SOCK_STREAM, 0);
        const int connected = ::connect(client, where_.Address(), where_.Size());
        const int server = ::accept(listener_.Number(), nullptr, nullptr);
        return connected + ::close(server) + ::close(client) + 1;
    }

private:
    Descriptor listener_ = CreateRawListener();
    Endpoint where_ = Endpoint::Of(listener_.Number());
};

class ClassicConnection : public ConnectionScene {
public:
    int Do() const {
        const SocketOwner client = CreateStream();
        client->Connect(Loopback(), port_);
        VelNet::SocketAddress remote;
        const SocketOwner server = listener_->Accept(remote);
        server->Close();
        client->Close();
        return 1;
    }

private:
    SocketOwner listener_ = CreateListener();
    unsigned short port_ = listener_->GetLocalAddress().GetPort();
};

}  // namespace

void AddConnectionRows(Cases& cases) {
    cases.push_back(CaseOf<RawConnection>("connection", "raw"));
    cases.push_back(CaseOf<ClassicConnection>("connection", "library"));
}

}  // namespace Bench

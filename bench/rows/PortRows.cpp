// Binding to a given port, alone, beside 10,000 open sockets, and after these were closed.

#include <unistd.h>

#include <cstddef>
#include <vector>

#include "Rows.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"

namespace Bench {
namespace {

constexpr std::size_t ManySockets = 10'000;
constexpr int BindsInARun = 10;

// Sockets that wait to be bound, and a port for each.
template <class Kind>
class BindScene {
public:
    static constexpr int Operations = BindsInARun;
    static constexpr int Result = 1;

    void Prepare() {
        sockets_.clear();
        while (sockets_.size() < BindsInARun)
            sockets_.push_back(Kind::Create());
        ports_ = FreePorts(BindsInARun);
        next_ = 0;
    }
    int Do() {
        const std::size_t index = next_++;
        return Kind::Bind(sockets_[index], ports_[index]);
    }

private:
    std::vector<typename Kind::Socket> sockets_;
    std::vector<unsigned short> ports_;
    std::size_t next_ = 0;
};

// Bound like most that are open in a busy server.
template <class Kind>
std::vector<typename Kind::Socket> OpenMany() {
    std::vector<typename Kind::Socket> sockets;
    while (sockets.size() < ManySockets) {
        sockets.push_back(Kind::Create());
        Kind::Bind(sockets.back(), 0);
    }
    return sockets;
}

template <class Kind>
class BindBesideMany : public BindScene<Kind> {
    std::vector<typename Kind::Socket> others_ = OpenMany<Kind>();
};

template <class Kind>
class BindAfterMany : public BindScene<Kind> {
public:
    BindAfterMany() { OpenMany<Kind>(); }
};

struct Raw {
    using Socket = Descriptor;

    static Socket Create() { return CreateRawSocket(SOCK_STREAM); }
    static int Bind(const Socket& socket, unsigned short port) {
        const Endpoint where(port);
        return ::bind(socket.Number(), where.Address(), where.Size()) + 1;
    }
};

struct Library {
    using Socket = SocketOwner;

    static Socket Create() { return CreateStream(); }
    static int Bind(const Socket& socket, unsigned short port) {
        socket->Bind(Loopback(), port);
        return 1;
    }
};

}  // namespace

void AddPortRows(Cases& cases) {
    cases.push_back(CaseOf<BindScene<Raw>>("bind", "raw"));
    cases.push_back(CaseOf<BindScene<Library>>("bind", "library"));
    cases.push_back(CaseOf<BindBesideMany<Raw>>("bind-beside-10000", "raw"));
    cases.push_back(CaseOf<BindBesideMany<Library>>("bind-beside-10000", "library"));
    cases.push_back(CaseOf<BindAfterMany<Raw>>("bind-after-10000", "raw"));
    cases.push_back(CaseOf<BindAfterMany<Library>>("bind-after-10000", "library"));
}

}  // namespace Bench

// A socket's whole life without a peer: made, bound to a port of the system's choice, closed,
// released.

#include <unistd.h>

#include "Rows.h"
#include "Scenes.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"

namespace Bench {
namespace {

class RawLife : public LifeScene {
public:
    int Do() const {
        const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
        const int bound = ::bind(socket, any_.Address(), any_.Size());
        return bound + ::close(socket) + 1;
    }

private:
    Endpoint any_;
};

class ClassicLife : public LifeScene {
public:
    int Do() const {
        const SocketOwner socket = CreateStream();
        socket->Bind(Loopback(), 0);
        socket->Close();
        return 1;
    }
};

}  // namespace

void AddCreationRows(Cases& cases) {
    cases.push_back(CaseOf<RawLife>("life", "raw"));
    cases.push_back(CaseOf<ClassicLife>("life", "library"));
}

}  // namespace Bench

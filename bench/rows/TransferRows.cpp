// Sending and receiving 64 bytes on a connected stream, with records off.

#include <sys/socket.h>

#include "Rows.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"
#include "harness/Transfers.h"

namespace Bench {
namespace {

struct RawEnd {
    int descriptor;

    int Send(const char* data, int size) const {
        const auto length = static_cast<std::size_t>(size);
        return static_cast<int>(::send(descriptor, data, length, MSG_NOSIGNAL));
    }
    int Receive(char* data, int size) const {
        return static_cast<int>(::recv(descriptor, data, static_cast<std::size_t>(size), 0));
    }
};

class RawEnds {
public:
    RawEnd Client() const noexcept { return {pair_.Client()}; }
    RawEnd Server() const noexcept { return {pair_.Server()}; }

private:
    RawPair pair_;
};

}  // namespace

void AddTransferRows(Cases& cases) {
    cases.push_back(CaseOf<SendScene<RawEnds>>("send", "raw"));
    cases.push_back(CaseOf<SendScene<ClassicPair>>("send", "library"));
    cases.push_back(CaseOf<SendScene<ExtendedPair>>("send", "library-extended"));
    cases.push_back(CaseOf<ReceiveScene<RawEnds>>("receive", "raw"));
    cases.push_back(CaseOf<ReceiveScene<ClassicPair>>("receive", "library"));
    cases.push_back(CaseOf<ReceiveScene<ExtendedPair>>("receive", "library-extended"));
}

}  // namespace Bench

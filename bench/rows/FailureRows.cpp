// A failure that is thrown and caught: receiving on a non-blocking socket that has nothing.

#include <VelNet/Exception.h>
#include <sys/socket.h>

#include <cerrno>

#include "Rows.h"
#include "Scenes.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"

namespace Bench {
namespace {

class RawFailure : public FailureScene {
public:
    RawFailure() { SetRawNonBlocking(pair_.Server()); }

    int Do() {
        return ::recv(pair_.Server(), block_.data(), BlockSize, 0) == -1 && errno == EAGAIN ? 1 : 0;
    }

private:
    RawPair pair_;
};

template <class Pair>
class LibraryFailure : public FailureScene {
public:
    LibraryFailure() { pair_.Server().SetNonBlocking(); }

    int Do() {
        try {
            return pair_.Server().Receive(block_.data(), BlockSize);
        } catch (const VelNet::Exception& failure) {
            return failure.GetErrorCode() == VelNet::SOCKET_ERR_WOULDBLOCK ? 1 : 0;
        }
    }

private:
    Pair pair_;
};

}  // namespace

void AddFailureRows(Cases& cases) {
    cases.push_back(CaseOf<RawFailure>("failure", "raw"));
    cases.push_back(CaseOf<LibraryFailure<ClassicPair>>("failure", "library"));
    cases.push_back(CaseOf<LibraryFailure<ExtendedPair>>("failure", "library-extended"));
}

}  // namespace Bench

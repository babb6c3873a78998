#include "RelayedConnection.h"

#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>

#include <cstdio>
#include <thread>
#include <utility>

namespace Peers {

namespace {

constexpr unsigned int SilenceMilliseconds = 100;
constexpr int MostSilences = 20;

bool IsLoss(const VelNet::Exception& failure) {
    const auto code = failure.GetErrorCode();
    return code == VelNet::SOCKET_ERR_CONNRESET || code == VelNet::SOCKET_ERR_CONNABORTED;
}

}  // namespace

RelayedConnection::RelayedConnection(SocketOwner client, SocketOwner server, Totals& totals)
    : client_(std::move(client)), server_(std::move(server)), totals_(totals) {
    client_->SetReceiveTimeout(SilenceMilliseconds);
    server_->SetReceiveTimeout(SilenceMilliseconds);
}

void RelayedConnection::Run() {
    std::thread questions([this] { UntilFailure([this] { PassQuestions(); }); });
    UntilFailure([this] { PassAnswers(); });
    questions.join();
}

// The other direction's thread may be inside an operation on either socket: closing ends that.
void RelayedConnection::End() {
    std::call_once(ending_, [this] {
        isJudged_ = true;
        server_->Close();
        client_->Close();
    });
}

void RelayedConnection::PassQuestions() {
    while (PassSome(*client_, *server_, totals_.questions) != Outcome::End) {
    }
    clientHasEnded_ = true;
}

void RelayedConnection::PassAnswers() {
    for (int silences = 0; silences < MostSilences;) {
        const Outcome outcome = PassSome(*server_, *client_, totals_.answers);
        if (outcome == Outcome::End) break;
        const bool isSilent = outcome == Outcome::Silence && clientHasEnded_;
        silences = isSilent ? silences + 1 : 0;
    }
    End();
}

template <class Direction>
void RelayedConnection::UntilFailure(Direction direction) noexcept {
    try {
        return direction();
    } catch (const VelNet::Exception& failure) {
        Judge(failure);
    } catch (const std::exception& failure) {
        BeSurprisedBy(failure.what());
    }
    End();
}

// The first failure counts; what a closed socket answers says nothing about the peer.
void RelayedConnection::Judge(const VelNet::Exception& failure) noexcept {
    if (isJudged_.exchange(true)) return;
    if (IsLoss(failure))
        ++totals_.lost;
    else
        BeSurprisedBy(VelCompanion::Describe(failure).c_str());
}

void RelayedConnection::BeSurprisedBy(const char* text) noexcept {
    ++totals_.surprises;
    std::fprintf(stderr, "%s\n", text);
}

RelayedConnection::Outcome RelayedConnection::PassSome(VelNet::SocketXt& from, VelNet::SocketXt& to,
                                                       Count& count) {
    char block[65536];
    std::size_t length = 0;
    try {
        length = static_cast<std::size_t>(from.Receive(block, sizeof block));
    } catch (const VelNet::Exception& failure) {
        if (VelCompanion::IsEndOfStream(failure)) return Outcome::End;
        if (VelCompanion::IsTimeout(failure)) return Outcome::Silence;
        throw;
    }
    VelCompanion::SendAll(to, {block, length});
    count += length;
    return Outcome::Passed;
}

}  // namespace Peers

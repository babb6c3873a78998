#include "DatagramRelay.h"

#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketXt.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "DatagramSocket.h"
#include "Endpoint.h"
#include "Limits.h"
#include "Pace.h"
#include "Target.h"
#include "Traffic.h"
#include "Transfer.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::SocketXt;

// After this time without an answer a sender counts as gone.
constexpr unsigned int IdleMilliseconds = 60000;

// Fewer than a process may usually have descriptors.
constexpr std::size_t MostSenders = 400;

// The socket that the senders send to. It receives in one thread and sends in many.
class Front {
public:
    Front(const Arguments& arguments, Traffic& traffic)
        : socket_(OpenExtendedDatagrams(arguments)),
          traffic_(traffic),
          buffer_(DatagramSocket::Room) {}

    Datagram Receive() { return socket_->Receive(buffer_.data()); }

    void Answer(const Datagram& to, std::string_view bytes) {
        const std::lock_guard lock(mutex_);
        socket_->Answer(to, bytes);
        traffic_.Received(bytes);
    }

private:
    const std::unique_ptr<DatagramSocket> socket_;
    Traffic& traffic_;
    std::mutex mutex_;
    std::vector<char> buffer_;
};

// A sender, its socket towards the target, and the thread that waits for answers.
class Sender {
public:
    Sender(Datagram from, ReturnPtrI<SocketXt> socket, Front& front)
        : from_(std::move(from)), socket_(std::move(socket)), front_(front) {
        socket_->SetReceiveTimeout(IdleMilliseconds);
        thread_ = std::thread([this] { PassAnswers(); });
    }
    ~Sender() {
        Close();
        thread_.join();
    }
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

    bool HasGone() const noexcept { return hasGone_; }

    // A datagram may be lost anywhere, here as well.
    void Send(std::string_view bytes) {
        try {
            static_cast<void>(socket_->Send(bytes.data(), static_cast<int>(bytes.size())));
        } catch (const VelNet::Exception& exception) {
            RemarkLost(exception);
        }
    }

private:
    void PassAnswers() {
        std::vector<char> buffer(DatagramSocket::Room);
        while (PassAnswer(buffer)) {
        }
        hasGone_ = true;
    }

    bool PassAnswer(std::vector<char>& buffer) try {
        const int count = socket_->Receive(buffer.data(), DatagramSocket::Room);
        front_.Answer(from_, {buffer.data(), static_cast<std::size_t>(count)});
        return true;
    } catch (const VelNet::Exception& exception) {
        return GoesOnAfter(exception);
    } catch (const std::exception&) {
        return false;  // the answers cannot be passed on
    }

    bool GoesOnAfter(const VelNet::Exception& exception) {
        if (IsNothingReceived(exception)) return PassEmptyAnswer();
        return exception.GetErrorCode() ==
               VelNet::SOCKET_ERR_CONNRESET;  // nobody listens there yet
    }

    bool PassEmptyAnswer() try {
        front_.Answer(from_, {});
        return true;
    } catch (const std::exception&) {
        return false;
    }

    static void RemarkLost(const VelNet::Exception& exception) {
        VelSockTools::JsonObject members;
        members.AddNumber("code", exception.GetErrorCode());
        Remark({"lost", "a datagram was not passed on: " + VelSockTools::ReasonOf(exception),
                members});
    }

    // Ends the wait for answers.
    void Close() {
        try {
            socket_->Close();
        } catch (const VelNet::Exception&) {
            return;  // it has been logged
        }
    }

    Datagram from_;
    ReturnPtrI<SocketXt> socket_;
    Front& front_;
    std::atomic<bool> hasGone_ = false;
    std::thread thread_;
};

class Senders {
public:
    Senders(const Arguments& arguments, Front& front)
        : arguments_(arguments),
          addresses_(AddressesOf(arguments.targetHost, SocketXt::FAMILY_UNKNOWN,
                                 VelCompanion::Deadline(LimitOf(arguments.connectTimeout)))),
          front_(front) {
        static_cast<void>(Connect());  // fails before anybody has sent anything
    }

    // Returns null if there are too many.
    Sender* Find(const Datagram& datagram) {
        const std::string key = datagram.senderHost + " " + datagram.senderPort;
        std::erase_if(senders_, [](const auto& each) { return each.second->HasGone(); });
        const auto found = senders_.find(key);
        if (found != senders_.end()) return found->second.get();
        if (senders_.size() == MostSenders) return nullptr;
        const Datagram from = {{}, datagram.senderHost, datagram.senderPort};
        return senders_.emplace(key, std::make_unique<Sender>(from, Connect(), front_))
            .first->second.get();
    }

private:
    ReturnPtrI<SocketXt> Connect() const {
        return ConnectToAny(Kind::Datagram, addresses_, arguments_.targetHost,
                            arguments_.targetPort, NoDeadline())
            .socket;
    }

    const Arguments& arguments_;
    const Addresses addresses_;
    Front& front_;
    std::map<std::string, std::unique_ptr<Sender>> senders_;
};

}  // namespace

VelSockTools::ExitCode RelayDatagrams(const Arguments& arguments) {
    Traffic traffic(arguments);
    Front front(arguments, traffic);
    Senders senders(arguments, front);
    for (Pace pace(arguments.rate);;) {
        const Datagram datagram = front.Receive();
        Sender* const sender = senders.Find(datagram);
        if (sender == nullptr) continue;
        pace.Await(datagram.bytes.size());
        sender->Send(datagram.bytes);
        traffic.Sent(datagram.bytes);
    }
}

}  // namespace VelSockCat

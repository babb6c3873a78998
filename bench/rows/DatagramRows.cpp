// A datagram of 64 bytes to a host and port that are given as texts, and back to texts where it
// arrives.

#include <netdb.h>
#include <sys/socket.h>

#include <string>

#include "Rows.h"
#include "Scenes.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"

namespace Bench {
namespace {

// With addresses in the system's form, which no text was made into.
class RawDatagrams : public DatagramScene {
public:
    int Do() {
        Endpoint from;
        socklen_t size = from.Size();
        const long sent = ::sendto(sender_.Number(), block_.data(), BlockSize, MSG_NOSIGNAL,
                                   where_.Address(), where_.Size());
        const long received =
            ::recvfrom(receiver_.Number(), block_.data(), BlockSize, 0, from.Address(), &size);
        return static_cast<int>(sent + received);
    }

private:
    Descriptor sender_ = CreateBoundRawSocket(SOCK_DGRAM);
    Descriptor receiver_ = CreateBoundRawSocket(SOCK_DGRAM);
    Endpoint where_ = Endpoint::Of(receiver_.Number());
};

// The same with the system's resolver for the texts.
class ResolverDatagrams : public DatagramScene {
public:
    int Do() { return Send() + Receive(); }

private:
    int Send() {
        const addrinfo wanted{0, AF_INET, SOCK_DGRAM, IPPROTO_UDP, 0, nullptr, nullptr, nullptr};
        addrinfo* found = nullptr;
        if (::getaddrinfo("127.0.0.1", port_.c_str(), &wanted, &found) != 0) return -1;
        const long sent = ::sendto(sender_.Number(), block_.data(), BlockSize, MSG_NOSIGNAL,
                                   found->ai_addr, found->ai_addrlen);
        ::freeaddrinfo(found);
        return static_cast<int>(sent);
    }
    int Receive() {
        Endpoint from;
        socklen_t size = from.Size();
        const long received =
            ::recvfrom(receiver_.Number(), block_.data(), BlockSize, 0, from.Address(), &size);
        char host[NI_MAXHOST];
        char port[NI_MAXSERV];
        const int named = ::getnameinfo(from.Address(), size, host, sizeof host, port, sizeof port,
                                        NI_NUMERICHOST | NI_NUMERICSERV);
        return named == 0 ? static_cast<int>(received) : -1;
    }

    Descriptor sender_ = CreateBoundRawSocket(SOCK_DGRAM);
    Descriptor receiver_ = CreateBoundRawSocket(SOCK_DGRAM);
    std::string port_ = std::to_string(Endpoint::Of(receiver_.Number()).Port());
};

class LibraryDatagrams : public DatagramScene {
public:
    int Do() {
        const int sent = sender_->SendTo(block_.data(), BlockSize, host_, port_.c_str());
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        return sent + receiver_->RecvFrom(block_.data(), BlockSize, host, port);
    }

private:
    ExtendedOwner sender_ = CreateBoundExtendedDatagram();
    ExtendedOwner receiver_ = CreateBoundExtendedDatagram();
    const char* host_ = LoopbackTextOf(*receiver_);
    std::string port_ = PortTextOf(*receiver_);
};

}  // namespace

void AddDatagramRows(Cases& cases) {
    cases.push_back(CaseOf<RawDatagrams>("datagram", "raw"));
    cases.push_back(CaseOf<ResolverDatagrams>("datagram", "resolver"));
    cases.push_back(CaseOf<LibraryDatagrams>("datagram", "library"));
}

}  // namespace Bench

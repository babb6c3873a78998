#include "names/NameServers.h"

#include "names/ResolverErrors.h"
#include "system/Descriptors.h"

#include <arpa/nameser.h>
#include <netinet/in.h>
#include <resolv.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <type_traits>

namespace Posix {

namespace {

constexpr unsigned long Streams = RES_USEVC;

enum class Reply { None, Failure, Other };

// The servers' reply to a question. If there is no usable answer, the resolver leaves the last
// reply in the buffer.
class ReplyMessage {
public:
    unsigned char* Room() noexcept { return bytes_; }
    static constexpr int Size = NS_PACKETSZ;

    bool IsThere() const noexcept { return (bytes_[2] & 0x80U) != 0; }
    bool TellsFailure() const noexcept { return (bytes_[3] & 0x0FU) == ns_r_servfail; }

private:
    unsigned char bytes_[Size] = {};
};

// The resolver with the system's settings but short timeouts.
class Resolver {
public:
    Resolver() noexcept : isMade_(::res_ninit(&state_) == 0) {
        state_.retrans = 1;
        state_.retry = 1;
        state_.options = (state_.options | RES_IGNTC) & ~Streams;
    }
    ~Resolver() {
        if (isMade_) ::res_nclose(&state_);
    }
    Resolver(const Resolver&) = delete;
    Resolver& operator=(const Resolver&) = delete;

    bool IsMade() const noexcept { return isMade_; }

    // The search domains, ended by null.
    const char* const* SearchedDomains() const noexcept { return state_.dnsrch; }

    Reply Ask(const char* name, const char* domain) {
        ReplyMessage reply;
        errno = 0;
        const int found = ::res_nquerydomain(&state_, name, domain, ns_c_in, ns_t_a, reply.Room(),
                                             ReplyMessage::Size);
        if (found >= 0 || reply.TellsFailure() || IsShortage(errno)) return Reply::Failure;
        return reply.IsThere() ? Reply::Other : Reply::None;
    }

private:
    std::remove_pointer_t<res_state> state_ = {};
    bool isMade_;
};

}  // namespace

// Asks with the resolver's own query, since the error of a look-up is the same whether a server
// failed, refused, was silent, or did not exist. The system says that no thread ends in that query,
// although it waits: the compiler would not close the resolver then.
bool DoesNameServerFail(const char* name) {
    const CancellationGuard whole;
    Resolver resolver;
    if (!resolver.IsMade()) return true;
    Reply reply = resolver.Ask(name, "");
    for (const auto* domain = resolver.SearchedDomains(); *domain != nullptr; ++domain) {
        if (reply != Reply::Other) break;
        reply = resolver.Ask(name, *domain);
    }
    return reply == Reply::Failure;
}

}  // namespace Posix

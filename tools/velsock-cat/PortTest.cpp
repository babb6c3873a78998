// The command ports: which ports of a host accept connections.
#include <deque>
#include <future>
#include <optional>
#include <string>

#include "Commands.h"
#include "Endpoint.h"
#include "Events.h"
#include "Limits.h"
#include "StandardStreams.h"
#include "Target.h"

namespace VelSockCat {

namespace {

using VelSockTools::ExitCode;
using VelSockTools::Failure;

// Ports that do not answer cost all of their time, so several are tried at once.
constexpr std::size_t AtOnce = 16;
constexpr unsigned int PatienceMilliseconds = 5000;

struct Result {
    unsigned short port;
    std::string address;
    std::chrono::duration<double> connecting{0};
    std::optional<Failure> failure;
};

class PortTest {
public:
    explicit PortTest(const Arguments& arguments) : arguments_(arguments) {}

    ExitCode Run() {
        const VelCompanion::Deadline deadline(Limit());
        addresses_ = AddressesOf(*arguments_.host, arguments_.version, deadline);
        for (const PortRange& range : arguments_.ports)
            for (int port = range.first; port <= range.last; ++port)
                Start(static_cast<unsigned short>(port));
        while (!running_.empty())
            TellNext();
        if (openPorts_ == 0) throw Failure{*first_};
        return ExitCode::InOrder;
    }

private:
    VelCompanion::Milliseconds Limit() const {
        return LimitOf(arguments_.connectTimeout.value_or(PatienceMilliseconds));
    }

    void Start(unsigned short port) {
        if (running_.size() == AtOnce) TellNext();
        running_.push_back(std::async(std::launch::async, [this, port] { return Try(port); }));
    }

    Result Try(unsigned short port) const {
        try {
            const VelCompanion::Deadline deadline(Limit());
            const Connected connected =
                ConnectToAny(Kind::Stream, addresses_, *arguments_.host, port, deadline);
            return {port, connected.address, connected.connecting, {}};
        } catch (const Failure& failure) {
            return {port, "", {}, failure};
        }
    }

    // In the order in which the ports were named.
    void TellNext() {
        const Result result = running_.front().get();
        running_.pop_front();
        if (!result.failure) ++openPorts_;
        if (result.failure && !first_) first_ = result.failure;
        if (VelSockTools::IsToldInJson()) {
            VelSockTools::WriteOutput(JsonOf(result));
        } else if (!result.failure || VelSockTools::IsVerbose()) {
            VelSockTools::WriteOutput(TextOf(result));
        }
    }

    std::string TextOf(const Result& result) const {
        return EndpointText(*arguments_.host, result.port) +
               (result.failure ? " is closed\n" : " is open\n");
    }

    std::string JsonOf(const Result& result) const {
        VelSockTools::JsonObject object = MembersOf(*arguments_.host, result.port);
        object.Add("open", result.failure ? "false" : "true");
        if (!result.failure) {
            object.AddText("address", result.address);
            object.AddDecimal("secondsToConnect", result.connecting.count());
            return object.Line();
        }
        object.AddText("text", result.failure->what());
        if (const auto error = result.failure->Error()) object.AddNumber("code", *error);
        return object.Line();
    }

    const Arguments& arguments_;
    Addresses addresses_;
    std::deque<std::future<Result>> running_;
    unsigned int openPorts_ = 0;
    std::optional<Failure> first_;
};

}  // namespace

ExitCode TestPorts(const Arguments& arguments) {
    return PortTest(arguments).Run();
}

}  // namespace VelSockCat

#include "Listing.h"

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <thread>

#include "Describe.h"
#include "Json.h"
#include "Printable.h"
#include "Reading.h"
#include "StandardStreams.h"

namespace VelSockTrace {

namespace {

using VelSockTools::ExitCode;
using VelSockTools::Failure;

const char* KindOf(const Conversation& conversation) noexcept {
    return conversation.isDatagrams ? "datagrams" : "stream";
}

// What is told of a conversation: it is seen from the end that has connected.
struct View {
    explicit View(const Conversation& of)
        : conversation(of), client(ClientOf(of)), server(1 - client) {}

    std::uint64_t Sent() const noexcept { return conversation.flows[client].Bytes(); }
    std::uint64_t Received() const noexcept { return conversation.flows[server].Bytes(); }
    std::string NameOfEnd(std::size_t end) const { return Printable(Name(conversation.ends[end])); }

    const Conversation& conversation;
    std::size_t client;
    std::size_t server;
};

std::string TextLine(const Conversation& conversation) {
    const View view(conversation);
    char head[128];
    std::snprintf(head, sizeof head, "%6u%c %s %13s  %-9s  ", conversation.number,
                  conversation.isUncertain ? '~' : ' ', TimeText(conversation.start).c_str(),
                  SecondsText(conversation.last - conversation.start).c_str(),
                  KindOf(conversation));
    char sizes[64];
    std::snprintf(sizes, sizeof sizes, " %11" PRIu64 " %11" PRIu64 "  ", view.Sent(),
                  view.Received());
    std::string ends = view.NameOfEnd(view.client);
    ends.resize(std::max<std::size_t>(ends.size(), 21), ' ');
    std::string server = view.NameOfEnd(view.server);
    server.resize(std::max<std::size_t>(server.size(), 21), ' ');
    return head + ends + "  " + server + sizes + OutcomeText(conversation) + "\n";
}

constexpr const char* Head =
    "     N  START                             SECONDS  KIND       CLIENT                 SERVER   "
    "                     SENT    RECEIVED  ENDED\n";

VelSockTools::JsonObject JsonEnd(const Endpoint& end) {
    VelSockTools::JsonObject object;
    object.AddText("host", end.host);
    if (end.port != 0) object.AddNumber("port", end.port);
    return object;
}

std::string Flag(bool value) {
    return value ? "true" : "false";
}

std::string JsonLine(const Conversation& conversation) {
    const View view(conversation);
    const auto& flows = conversation.flows;
    VelSockTools::JsonObject object;
    object.AddNumber("number", conversation.number);
    object.AddText("kind", KindOf(conversation));
    object.AddText("start", TimeText(conversation.start));
    object.Add("seconds", SecondsText(conversation.last - conversation.start));
    object.Add("client", JsonEnd(conversation.ends[view.client]).Text());
    object.Add("server", JsonEnd(conversation.ends[view.server]).Text());
    object.Add("sent", std::to_string(view.Sent()));
    object.Add("received", std::to_string(view.Received()));
    object.Add("sentTransfers", std::to_string(flows[view.client].Transfers()));
    object.Add("receivedTransfers", std::to_string(flows[view.server].Transfers()));
    object.AddText("ended", NameOf(OutcomeOf(conversation)));
    if (conversation.loss != 0) {
        object.AddNumber("error", conversation.loss);
        object.AddText("symbol", ErrorSymbol(conversation.loss));
    }
    object.AddNumber("failures", conversation.failures);
    object.Add("bothEnds", Flag(conversation.sides[1].isLogged));
    object.Add("uncertain", Flag(conversation.isUncertain));
    return object.Line();
}

class Listing : public Observer {
public:
    explicit Listing(const Arguments& arguments) : arguments_(arguments) {}

    void Forgotten(const Conversation& conversation) override {
        if (!arguments_.filter.Passes(conversation)) return;
        if (!arguments_.json && !hasFound_) output_ += Head;
        hasFound_ = true;
        output_ += arguments_.json ? JsonLine(conversation) : TextLine(conversation);
        if (output_.size() > 65536) Flush();
    }

    void Flush() {
        VelSockTools::WriteOutput(output_);
        output_.clear();
    }

    bool HasFound() const noexcept { return hasFound_; }

private:
    const Arguments& arguments_;
    bool hasFound_ = false;
    std::string output_;
};

// For as long as the program runs. What has ended is shown when nothing has come for a while.
[[noreturn]] void Follow(Logs& logs, Conversations& conversations, Listing& listing) {
    constexpr int roundsUntilSettled = 10;
    for (int idleRounds = 0;;) {
        const Logs::Next next = logs.Take();
        if (next.record != nullptr) {
            conversations.Take(*next.record, next.log);
            idleRounds = 0;
            continue;
        }
        if (++idleRounds == roundsUntilSettled) conversations.Settle();
        listing.Flush();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

}  // namespace

void List(const Arguments& arguments) {
    Logs logs(arguments.files, arguments.follow);
    Listing listing(arguments);
    Conversations conversations(listing);
    if (arguments.follow) Follow(logs, conversations, listing);
    const std::uint64_t strayFailures = ReadAll(logs, conversations);
    listing.Flush();
    TellFaults(logs.FaultsSoFar(), strayFailures);
    if (!listing.HasFound()) throw Failure(ExitCode::NothingFound, "there is no such conversation");
}

}  // namespace VelSockTrace

#include "Show.h"

#include <array>

#include "Describe.h"
#include "Dump.h"
#include "HexBytes.h"
#include "Playback.h"
#include "Printable.h"
#include "Reading.h"
#include "StandardStreams.h"
#include "TimeText.h"

namespace VelSockTrace {

namespace {

std::string Bytes(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

const char* NameOfEnd(const Conversation& conversation, std::size_t end) noexcept {
    return end == ClientOf(conversation) ? "client" : "server";
}

class Printer : public Player {
public:
    explicit Printer(bool isHex) : isHex_(isHex) {}

    void Begins(const Conversation& conversation, std::int64_t time) override {
        const std::size_t client = ClientOf(conversation);
        const auto& flows = conversation.flows;
        last_ = time;
        Write("conversation " + std::to_string(conversation.number) + ", " +
              (conversation.isDatagrams ? "datagrams" : "stream") + "\n  client " +
              NameAndBytes(conversation.ends[client], flows[client]) + "\n  server " +
              NameAndBytes(conversation.ends[1 - client], flows[1 - client]) + "\n  began " +
              TimeText(conversation.start) + ", lasted " +
              SecondsText(conversation.last - conversation.start) + " s, " +
              OutcomeText(conversation) + "\n  " +
              (conversation.sides[1].isLogged ? "from the logs of both ends"
                                              : "from the log of one end") +
              "\n\n");
    }

    void Connects(const Conversation&, std::int64_t time) override {
        Write(Moment(time) + "connected\n");
    }

    void Sends(const Conversation& conversation, const Piece& piece) override {
        Write(Moment(piece.time) + NameOfEnd(conversation, piece.from) + " " + Bytes(piece.length) +
              "\n" + Content(piece));
        offsets_[piece.from] += piece.length;
    }

    void Fails(const Conversation& conversation, std::size_t end, const Record& record,
               const FailureRecord& failure) override {
        const std::string reason =
            failure.number > 0 ? ErrorText(failure.number) : Printable(record.text);
        Write(Moment(record.time) + NameOfEnd(conversation, end) + " failed: " + reason + "\n");
    }

    void Closes(const Conversation& conversation, std::size_t end, std::int64_t time) override {
        Write(Moment(time) + NameOfEnd(conversation, end) + " closed\n");
    }

private:
    static std::string NameAndBytes(const Endpoint& end, const Flow& flow) {
        return Printable(Name(end)) + " sent " + Bytes(flow.Bytes()) + " in " +
               std::to_string(flow.Transfers());
    }

    // The time of day, and how long after what precedes.
    std::string Moment(std::int64_t time) {
        const std::int64_t since = time - std::exchange(last_, time);
        const std::string sign = since < 0 ? "-" : "+";
        return TimeText(time).substr(11, 15) + "  " + sign +
               SecondsText(since < 0 ? -since : since) + "  ";
    }

    std::string Content(const Piece& piece) const {
        if (!piece.hasData) return piece.length == 0 ? "" : "    (the bytes are not recorded)\n";
        const std::string bytes = DecodeBytes(piece.digits, piece.skipped, piece.length);
        std::string text = isHex_ ? HexDump(bytes, offsets_[piece.from]) : TextDump(bytes);
        const std::uint64_t missing = piece.length - bytes.size();
        if (missing > 0) text += "    (" + Bytes(missing) + " more, which the record lacks)\n";
        return text;
    }

    static void Write(const std::string& text) { VelSockTools::WriteOutput(text); }

    bool isHex_;
    std::int64_t last_ = 0;
    std::array<std::uint64_t, 2> offsets_{};  // in what each end has sent
};

}  // namespace

void Show(const Arguments& arguments) {
    const Survey survey = ReadSurvey(arguments);
    Printer printer(arguments.hex);
    Play(arguments, survey, printer);
}

}  // namespace VelSockTrace

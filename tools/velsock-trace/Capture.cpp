#include "Capture.h"

#include <algorithm>
#include <unordered_map>

#include "HexBytes.h"
#include "Reading.h"
#include "StreamPackets.h"

namespace VelSockTrace {

namespace {

// A line may tell of more bytes than it has, and must not fill the disk.
constexpr std::uint64_t MostZeros = std::uint64_t{16} << 20U;
constexpr int ConnectionRefused = 10061;
constexpr int FirstResolverError = 11000;

// The bytes of a piece: those that are recorded, and zeros for the others.
struct Content {
    std::string bytes;
    std::uint64_t zeros = 0;
    std::string comment;  // about what is not recorded
};

Content ContentOf(const Piece& piece) {
    Content content;
    if (piece.hasData) content.bytes = DecodeBytes(piece.digits, piece.skipped, piece.length);
    const std::uint64_t missing = piece.length - content.bytes.size();
    if (missing == 0) return content;
    content.zeros = std::min(missing, MostZeros);
    content.comment = std::to_string(missing) + " bytes are not recorded; zeros stand for them";
    if (missing > content.zeros)
        content.comment += ", and " + std::to_string(missing - content.zeros) + " are left out";
    return content;
}

class CapturePlayer : public Player {
public:
    explicit CapturePlayer(Pcapng& capture) : capture_(capture) {}

    void Begins(const Conversation& conversation, std::int64_t) override {
        if (!conversation.isDatagrams)
            streams_.emplace(conversation.number, StreamPackets(conversation, capture_));
    }

    void Connects(const Conversation& conversation, std::int64_t time) override {
        if (StreamPackets* const stream = Find(conversation)) stream->Connect(time);
    }

    void Sends(const Conversation& conversation, const Piece& piece) override {
        const Content content = ContentOf(piece);
        if (StreamPackets* const stream = Find(conversation)) {
            stream->Send(piece, content.bytes, content.zeros, content.comment);
        } else {
            WriteDatagram(conversation, piece, content);
        }
    }

    void Fails(const Conversation& conversation, std::size_t end, const Record& record,
               const FailureRecord& failure) override {
        StreamPackets* const stream = Find(conversation);
        if (stream == nullptr) return;
        if (!failure.isConnecting) {
            if (IsLoss(failure.number)) stream->Reset(1 - end, record.time);
        } else if (failure.number < FirstResolverError) {
            stream->Refuse(record.time, failure.number == ConnectionRefused);
        }
    }

    void Closes(const Conversation& conversation, std::size_t end, std::int64_t time) override {
        if (conversation.isRefused) return;
        if (StreamPackets* const stream = Find(conversation)) stream->Close(end, time);
    }

    void IsOver(const Conversation& conversation) override {
        StreamPackets* const stream = Find(conversation);
        if (stream == nullptr) return;
        stream->Finish();
        streams_.erase(conversation.number);
    }

private:
    StreamPackets* Find(const Conversation& conversation) {
        const auto found = streams_.find(conversation.number);
        return found == streams_.end() ? nullptr : &found->second;
    }

    void WriteDatagram(const Conversation& conversation, const Piece& piece, Content content) {
        const Routes routes = RoutesOf(conversation);
        content.bytes.append(content.zeros, '\0');
        std::string comment = "conversation " + std::to_string(conversation.number) + routes.remark;
        if (!content.comment.empty()) comment += "; " + content.comment;
        if (content.bytes.size() > MostOfDatagram) comment += "; more than a datagram can hold";
        const Route route{routes.ends[piece.from], routes.ends[1 - piece.from]};
        capture_.Write(piece.time,
                       UdpPacket(route, std::string_view(content.bytes).substr(0, MostOfDatagram)),
                       comment);
    }

    Pcapng& capture_;
    std::unordered_map<unsigned int, StreamPackets> streams_;
};

}  // namespace

void WriteCapture(const Arguments& arguments) {
    const Survey survey = ReadSurvey(arguments);
    Pcapng capture(arguments.capture);
    CapturePlayer player(capture);
    Play(arguments, survey, player);
    capture.Close();
}

}  // namespace VelSockTrace

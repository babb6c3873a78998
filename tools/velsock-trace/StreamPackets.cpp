#include "StreamPackets.h"

#include <algorithm>
#include <utility>

namespace VelSockTrace {

namespace {

// So that each stream and direction has numbers of its own.
std::uint32_t FirstSequence(unsigned int number, std::size_t end) noexcept {
    return number * 0x0100'0193U + static_cast<std::uint32_t>(end) * 0x4000'0000U + 1;
}

}  // namespace

StreamPackets::StreamPackets(const Conversation& conversation, Pcapng& capture)
    : conversation_(conversation),
      capture_(capture),
      next_{FirstSequence(conversation.number, 0), FirstSequence(conversation.number, 1)} {
    Routes routes = RoutesOf(conversation);
    ends_ = routes.ends;
    remark_ = "conversation " + std::to_string(conversation.number) + routes.remark;
}

void StreamPackets::Connect(std::int64_t time) {
    const std::size_t client = ClientOf(conversation_);
    Write(client, Syn, "", time);
    Write(1 - client, Syn | Ack, "", time);
    Write(client, Ack, "", time);
}

void StreamPackets::Refuse(std::int64_t time, bool isAnswered) {
    const std::size_t client = ClientOf(conversation_);
    Write(client, Syn, "", time);
    if (isAnswered) Write(1 - client, Rst | Ack, "", time);
}

void StreamPackets::Send(const Piece& piece, std::string_view bytes, std::uint64_t zeros,
                         const std::string& comment) {
    std::string data(bytes);
    data.append(zeros, '\0');
    for (std::size_t begin = 0; begin < data.size(); begin += MostOfSegment) {
        const bool isLast = data.size() - begin <= MostOfSegment;
        Write(piece.from, isLast ? Psh | Ack : Ack,
              std::string_view(data).substr(begin, MostOfSegment), piece.time, comment);
    }
    // What is left out leaves a gap.
    next_[piece.from] += static_cast<std::uint32_t>(piece.length - data.size());
    sent_[piece.from] += piece.length;
    for (const std::size_t end : {0U, 1U})
        TryToEnd(end, piece.time);
}

void StreamPackets::Close(std::size_t end, std::int64_t time) {
    End(end, Ending::Close, time);
    // The other end's records would tell when it closed.
    const bool isLogged = conversation_.sides[1 - end].isLogged;
    if (!isLogged && hasEnded_[end]) End(1 - end, Ending::Close, time);
}

void StreamPackets::Reset(std::size_t end, std::int64_t time) {
    End(end, Ending::Reset, time);
}

void StreamPackets::Finish() {
    for (const std::size_t end : {0U, 1U}) {
        if (endings_[end] != Ending::None && !hasEnded_[end]) WriteEnd(end, conversation_.last);
    }
}

void StreamPackets::End(std::size_t end, Ending ending, std::int64_t time) {
    if (endings_[end] != Ending::Reset) endings_[end] = ending;
    TryToEnd(end, time);
}

void StreamPackets::TryToEnd(std::size_t end, std::int64_t time) {
    if (endings_[end] == Ending::None || hasEnded_[end]) return;
    if (sent_[end] < conversation_.flows[end].Bytes()) return;
    WriteEnd(end, time);
}

// The other end acknowledges. After a reset nothing follows.
void StreamPackets::WriteEnd(std::size_t end, std::int64_t time) {
    hasEnded_[end] = true;
    if (isReset_) return;
    isReset_ = endings_[end] == Ending::Reset;
    Write(end, isReset_ ? Rst | Ack : Fin | Ack, "", time);
    if (!isReset_) Write(1 - end, Ack, "", time);
}

void StreamPackets::Write(std::size_t from, unsigned char flags, std::string_view data,
                          std::int64_t time, const std::string& comment) {
    const TcpHead head{next_[from], (flags & Ack) != 0 ? next_[1 - from] : 0, flags};
    std::string remark = std::exchange(remark_, "");
    if (!remark.empty() && !comment.empty()) remark += "; ";
    capture_.Write(time, TcpPacket({ends_[from], ends_[1 - from]}, head, data), remark + comment);
    next_[from] += static_cast<std::uint32_t>(data.size());
    if ((flags & (Syn | Fin)) != 0) ++next_[from];
}

}  // namespace VelSockTrace

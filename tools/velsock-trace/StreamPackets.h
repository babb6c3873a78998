// The packets of one stream.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "Packet.h"
#include "Pcapng.h"
#include "Playback.h"
#include "Route.h"

namespace VelSockTrace {

// Numbers bytes as TCP does. An end is closed only when all that it has sent is written, since the
// records of its sending may be read after those of its closing.
class StreamPackets {
public:
    StreamPackets(const Conversation& conversation, Pcapng& capture);

    // Each packet carries a comment if there is one to add.
    void Connect(std::int64_t time);
    void Refuse(std::int64_t time, bool isAnswered);
    // Bytes that are not known are zeros, as many as given.
    void Send(const Piece& piece, std::string_view bytes, std::uint64_t zeros,
              const std::string& comment);
    void Close(std::size_t end, std::int64_t time);
    void Reset(std::size_t end, std::int64_t time);
    void Finish();

private:
    enum class Ending { None, Close, Reset };

    void Write(std::size_t from, unsigned char flags, std::string_view data, std::int64_t time,
               const std::string& comment = "");
    void End(std::size_t end, Ending ending, std::int64_t time);
    void TryToEnd(std::size_t end, std::int64_t time);
    void WriteEnd(std::size_t end, std::int64_t time);

    const Conversation& conversation_;
    Pcapng& capture_;
    std::array<Endpoint, 2> ends_;
    std::string remark_;                 // for the next packet
    std::array<std::uint32_t, 2> next_;  // sequence numbers
    std::array<std::uint64_t, 2> sent_{};
    std::array<Ending, 2> endings_{};
    std::array<bool, 2> hasEnded_{};
    bool isReset_ = false;
};

}  // namespace VelSockTrace

#include "LineParser.h"

#include "LineHead.h"

namespace VelSockTrace {

namespace {

constexpr std::string_view RemoteLabel = ", Remote address: ";
constexpr std::string_view DataLabel = ", data: ";
// What an int holds, as the library counts.
constexpr std::uint64_t MostBytes = 0x7FFF'FFFF;

bool TakeEnds(std::string_view ends, Record& record) noexcept {
    record.ends = ends;
    return ends.ends_with(')') && ends.find(RemoteLabel) != std::string_view::npos;
}

LineKind Accepted(bool isWhole) noexcept {
    return isWhole ? LineKind::Record : LineKind::Broken;
}

LineKind ParseConnection(std::string_view text, Record& record) noexcept {
    if (Take(text, "Connected")) {
        record.kind = RecordKind::Connected;
    } else if (Take(text, "Disconnected")) {
        record.kind = RecordKind::Disconnected;
    } else {
        return LineKind::Broken;
    }
    return Accepted(Take(text, ", Local address: ") && TakeEnds(text, record));
}

RecordKind TakeTransferKind(std::string_view& text) noexcept {
    if (Take(text, "Sent ")) return RecordKind::Sent;
    if (Take(text, "Received ")) return RecordKind::Received;
    if (Take(text, "Sendto ")) return RecordKind::SentTo;
    if (Take(text, "Recvfrom ")) return RecordKind::ReceivedFrom;
    return RecordKind::Other;
}

bool TakeLength(std::string_view& text, Record& record) noexcept {
    std::uint64_t length = 0;
    if (!TakeNumber(text, length) || length > MostBytes) return false;
    record.length = static_cast<std::uint32_t>(length);
    return Take(text, " bytes, Local address: ");
}

// A byte has at least two digits.
void TakeData(std::string_view data, Record& record) noexcept {
    record.data = data;
    record.hasData = true;
    record.isDamaged = data.size() / 2 < record.length;
}

LineKind ParseTransfer(std::string_view text, bool withData, Record& record) noexcept {
    record.kind = TakeTransferKind(text);
    if (record.kind == RecordKind::Other || !TakeLength(text, record)) return LineKind::Broken;
    if (!withData) return Accepted(TakeEnds(text, record));
    const std::size_t label = text.find(DataLabel);
    if (label == std::string_view::npos) return LineKind::Broken;
    TakeData(text.substr(label + DataLabel.size()), record);
    return Accepted(TakeEnds(text.substr(0, label), record));
}

LineKind ParseText(const LineHead& head, Record& record) noexcept {
    record.text = head.text;
    if (head.category == "Packet Trace") return ParseTransfer(head.text, false, record);
    if (head.category == "Verbose Packet Trace") return ParseTransfer(head.text, true, record);
    if (head.category == "Connection Trace") return ParseConnection(head.text, record);
    if (head.category != "Error") return LineKind::Foreign;
    record.kind = RecordKind::Failure;
    return LineKind::Record;
}

bool ReadHead(std::string_view line, TimeReader& times, std::string& scratch, LineHead& head) {
    if (line.empty()) return false;
    if (line.front() == '{') return ReadJsonLine(line, times, scratch, head);
    if (line.front() >= '0' && line.front() <= '9') return ReadPlainLine(line, times, head);
    return ReadLogfmtLine(line, times, scratch, head);
}

}  // namespace

LineKind LineParser::Parse(std::string_view line, Record& record) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    LineHead head;
    record = {};
    if (!ReadHead(line, times_, scratch_, head) || head.router != "Network")
        return LineKind::Foreign;
    record.time = head.time;
    record.process = head.process;
    record.mark = head.mark;
    return ParseText(head, record);
}

}  // namespace VelSockTrace

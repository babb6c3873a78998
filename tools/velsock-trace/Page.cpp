#include "Page.h"

#include <algorithm>
#include <map>

#include "Describe.h"
#include "HexBytes.h"
#include "Json.h"
#include "OutputFile.h"
#include "PageText.h"
#include "Printable.h"
#include "Reading.h"
#include "Text.h"
#include "TimeText.h"

namespace VelSockTrace {

namespace {

using VelSockTools::JsonText;

// Of the bytes, so many of a transfer, and of all of them.
constexpr std::uint64_t MostOfTransfer = 1024;
constexpr std::uint64_t MostOfPage = std::uint64_t{16} << 20U;

// No text can end the element that it stands in.
std::string Embedded(const std::string& text) {
    std::string json;
    for (const char character : JsonText(Printable(text)))
        json += character == '<' ? "\\u003c" : std::string(1, character);
    return json;
}

std::string Digits(const std::string& bytes) {
    std::string digits;
    for (const char byte : bytes)
        digits += VelSockTools::HexDigits(static_cast<unsigned char>(byte));
    return digits;
}

std::string InBrackets(const std::string& entries) {
    return std::string("[").append(entries).append("]");
}

class PagePlayer : public Player {
public:
    PagePlayer(OutputFile& file, std::int64_t start) : file_(file), start_(start) {}

    void Sends(const Conversation& conversation, const Piece& piece) override {
        const std::uint64_t most = std::min(MostOfTransfer, MostOfPage - bytes_);
        std::string bytes;
        if (piece.hasData)
            bytes = DecodeBytes(piece.digits, piece.skipped, std::min(piece.length, most));
        bytes_ += bytes.size();
        std::string& transfers = lanes_[conversation.number].transfers;
        BeginEntry(transfers, conversation, piece.from, piece.time);
        transfers.append(std::to_string(piece.length)).append(",\"");
        transfers.append(Digits(bytes)).append("\"]");
    }

    void Fails(const Conversation& conversation, std::size_t end, const Record& record,
               const FailureRecord& failure) override {
        const std::string text =
            failure.number > 0 ? ErrorText(failure.number) : std::string(record.text);
        std::string& failures = lanes_[conversation.number].failures;
        BeginEntry(failures, conversation, end, record.time);
        failures.append(Embedded(text)).append("]");
    }

    void IsOver(const Conversation& conversation) override {
        const Lane lane = std::move(lanes_[conversation.number]);
        lanes_.erase(conversation.number);
        const std::size_t client = ClientOf(conversation);
        const Outcome outcome = OutcomeOf(conversation);
        const bool isBad = outcome == Outcome::Failed || outcome == Outcome::NotConnected;
        VelSockTools::JsonObject object;
        object.AddNumber("number", conversation.number);
        object.AddText("kind", conversation.isDatagrams ? "datagrams" : "stream");
        object.Add("client", Embedded(Name(conversation.ends[client])));
        object.Add("server", Embedded(Name(conversation.ends[1 - client])));
        object.AddNumber("begin", conversation.start - start_);
        object.AddNumber("end", conversation.last - start_);
        object.Add("ended", Embedded(OutcomeText(conversation)));
        object.Add("isBad", isBad ? "true" : "false");
        object.Add("transfers", InBrackets(lane.transfers));
        object.Add("failures", InBrackets(lane.failures));
        file_.Write(isFirst_ ? "\n" : ",\n");
        file_.Write(object.Text());
        isFirst_ = false;
    }

private:
    struct Lane {
        std::string transfers;
        std::string failures;
    };

    // When, and whether by the client or by the server.
    void BeginEntry(std::string& list, const Conversation& conversation, std::size_t end,
                    std::int64_t time) const {
        if (!list.empty()) list += ',';
        list += '[';
        list.append(std::to_string(time - start_));
        list.append(end == ClientOf(conversation) ? ",0," : ",1,");
    }

    OutputFile& file_;
    std::int64_t start_;
    std::uint64_t bytes_ = 0;
    bool isFirst_ = true;
    std::map<unsigned int, Lane> lanes_;
};

std::int64_t StartOf(const Survey& survey) {
    std::int64_t start = survey.wanted.begin()->second.start;
    for (const auto& [number, conversation] : survey.wanted)
        start = std::min(start, conversation.start);
    return start;
}

}  // namespace

void WritePage(const Arguments& arguments) {
    const Survey survey = ReadSurvey(arguments);
    const std::int64_t start = StartOf(survey);
    OutputFile file(arguments.page);
    PagePlayer player(file, start);
    file.Write(PageBeforeData);
    file.Write("{\"start\":" + JsonText(TimeText(start)) + ",\"conversations\":[");
    Play(arguments, survey, player);
    file.Write("]}");
    file.Write(PageAfterData);
    file.Close();
}

}  // namespace VelSockTrace

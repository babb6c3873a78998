// Logs as velsock-trace reads them: nothing in a line may break it, and what it tells of
// conversations must hold together.
#include <map>
#include <string>

#include "fuzz/Fuzzing.h"
#include "velsock-trace/Conversations.h"
#include "velsock-trace/HexBytes.h"
#include "velsock-trace/LineParser.h"

namespace {

using namespace VelSockTrace;

class Auditor : public Observer {
public:
    void Began(const Conversation& conversation) override { ++alive_[conversation.number]; }
    void Transferred(const Conversation& conversation, std::size_t, const Record& record) override {
        Fuzz::Expect("a transfer of a conversation that is alive", 1, alive_[conversation.number]);
        const std::string bytes = DecodeBytes(record.data, 0, record.length);
        Fuzz::Expect("no more bytes than the record has", true, bytes.size() <= record.length);
    }
    void Forgotten(const Conversation& conversation) override {
        Fuzz::Expect("each conversation is forgotten once", 1, alive_[conversation.number]--);
        Fuzz::Expect("the end follows the beginning", true,
                     conversation.start <= conversation.last);
    }
    void Joined(unsigned int, unsigned int otherEnd) override {
        Fuzz::Expect("an end is joined once", 1, alive_[otherEnd]--);
    }
    void ExpectNone() const {
        for (const auto& [number, count] : alive_)
            Fuzz::Expect("no conversation is left", 0, count);
    }

private:
    std::map<unsigned int, int> alive_;
};

}  // namespace

// The first byte of a line chooses its log. The limits are so low that they are met.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Fuzz::Input input(data, size);
    Auditor auditor;
    const Limits limits{.open = 4, .lingering = 3, .lingerTime = 1'000'000};
    Conversations conversations(auditor, limits);
    LineParser parser;
    while (!input.IsEmpty()) {
        const unsigned int log = input.Below(2);
        Record record;
        if (parser.Parse(input.Line(), record) == LineKind::Record) conversations.Take(record, log);
    }
    conversations.Finish();
    auditor.ExpectNone();
    return 0;
}

// What a record of a transfer adds to the transfer: into a sink that does nothing, into a file,
// with no sink at all, and what each byte costs whose value is in it.

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "Rows.h"
#include "harness/LibrarySockets.h"
#include "harness/Records.h"
#include "harness/Transfers.h"

namespace Bench {
namespace {

constexpr const char* Packets = "Packet Trace";
constexpr const char* PacketsWithBytes = "Verbose Packet Trace";

// Sends blocks of so many bytes, none of them above 127: each has two digits.
template <int Bytes>
class SilentSending {
public:
    static constexpr int Operations = 20;
    static constexpr int Result = Bytes;

    SilentSending() {
        std::generate(block_.begin(), block_.end(),
                      [value = 0]() mutable { return static_cast<char>(value++ % 128); });
    }

    void Prepare() { TakeOut(pair_.Server(), std::exchange(sent_, Operations * Bytes), Bytes); }
    int Do() { return pair_.Client().Send(block_.data(), Bytes); }

private:
    ClassicPair pair_;
    std::array<char, std::size_t{Bytes}> block_{};
    int sent_ = 0;
};

template <int Bytes, class SinkOwner>
class RecordedSending : public SilentSending<Bytes> {
public:
    explicit RecordedSending(const char* category) : category_(category) {}

    void Prepare() {
        SilentSending<Bytes>::Prepare();
        SwitchRecordsOn(category_, owner_.Sink());
    }
    void Restore() { SwitchRecordsOff(category_); }

private:
    const char* category_;
    SinkOwner owner_;
};

class NullSinkOwner {
public:
    VelLog::LogSink* Sink() { return &sink_; }

private:
    NullSink sink_;
};

class NoSink {
public:
    VelLog::LogSink* Sink() const { return nullptr; }
};

template <class SinkOwner>
class PacketRecord : public RecordedSending<64, SinkOwner> {
public:
    PacketRecord() : RecordedSending<64, SinkOwner>(Packets) {}
};

template <int Bytes>
class VerboseRecord : public RecordedSending<Bytes, NullSinkOwner> {
public:
    VerboseRecord() : RecordedSending<Bytes, NullSinkOwner>(PacketsWithBytes) {}
};

}  // namespace

void AddRecordRows(Cases& cases) {
    cases.push_back(CaseOf<SilentSending<64>>("record", "silent"));
    cases.push_back(CaseOf<PacketRecord<NullSinkOwner>>("record", "library"));
    cases.push_back(CaseOf<SilentSending<64>>("record-to-file", "silent"));
    cases.push_back(CaseOf<PacketRecord<TemporaryFileSink>>("record-to-file", "library"));
    cases.push_back(CaseOf<SilentSending<64>>("record-without-sink", "silent"));
    cases.push_back(CaseOf<PacketRecord<NoSink>>("record-without-sink", "library"));
    // A thousand bytes more.
    cases.push_back(CaseOf<VerboseRecord<24>>("hexadecimal-1000", "24-bytes"));
    cases.push_back(CaseOf<VerboseRecord<1024>>("hexadecimal-1000", "library"));
}

}  // namespace Bench

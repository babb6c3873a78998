// Transfers of many bytes, without records and with their bytes in a record.

#include "ScaledRows.h"
#include "harness/LibrarySockets.h"
#include "harness/Records.h"
#include "harness/Transfers.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace Bench {
namespace {

class SendBytes : public ScaledScene {
public:
    explicit SendBytes(int count) : bytes_(static_cast<std::size_t>(count)) {}

    void Prepare() { TakeOut(pair_.Server(), std::exchange(sent_, 0), Size()); }
    int Do() {
        sent_ = pair_.Client().Send(bytes_.data(), Size());
        return sent_ == Size();
    }

private:
    int Size() const { return static_cast<int>(bytes_.size()); }

    ClassicPair pair_;
    std::vector<char> bytes_;
    int sent_ = 0;
};

class SendRecordedBytes : public SendBytes {
public:
    using SendBytes::SendBytes;

    void Prepare() {
        SendBytes::Prepare();
        SwitchRecordsOn("Verbose Packet Trace", &sink_);
    }
    void Restore() { SwitchRecordsOff("Verbose Packet Trace"); }

private:
    NullSink sink_;
};

}  // namespace

void AddByteGrowth(Cases& cases) {
    const auto numbers = {1, 16, 256, 4'096, 65'536};
    AddGrowth<SendBytes>(cases, "send-bytes", numbers);
    AddGrowth<SendRecordedBytes>(cases, "record-of-bytes", numbers);
}

}  // namespace Bench

// spdlog, with records of the same contents: this library sends with its own records off, and
// spdlog writes the record.

#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>

#include "Peers.h"
#include "harness/LibrarySockets.h"
#include "harness/Records.h"
#include "harness/Transfers.h"

namespace Bench {
namespace {

class RecordedSending {
public:
    static constexpr int Operations = 20;
    static constexpr int Result = BlockSize;

    explicit RecordedSending(spdlog::sink_ptr sink) : log_("Network", std::move(sink)) {
        log_.flush_on(spdlog::level::info);
    }
    // One that has no sink.
    RecordedSending() : log_("Network") {}

    void Prepare() {
        TakeOut(pair_.Server(), std::exchange(sent_, Operations * BlockSize), BlockSize);
    }
    int Do() {
        const int sent = pair_.Client().Send(block_.data(), BlockSize);
        log_.info("Sent {} bytes, Local address: {} ({}), Remote address: {} ({})", sent, host_,
                  clientPort_, host_, serverPort_);
        return sent;
    }

private:
    ClassicPair pair_;
    Block block_{};
    int sent_ = 0;
    std::string host_ = "127.0.0.1";
    unsigned int clientPort_ = pair_.Client().GetLocalAddress().GetPort();
    unsigned int serverPort_ = pair_.Server().GetLocalAddress().GetPort();
    spdlog::logger log_;
};

class NullRecord : public RecordedSending {
public:
    NullRecord() : RecordedSending(std::make_shared<spdlog::sinks::null_sink_mt>()) {}
};

class FileRecord : public RecordedSending {
public:
    FileRecord() : FileRecord(TemporaryPath()) {}
    ~FileRecord() { ::unlink(path_.c_str()); }
    FileRecord(const FileRecord&) = delete;
    FileRecord& operator=(const FileRecord&) = delete;

private:
    explicit FileRecord(const std::string& path)
        : RecordedSending(std::make_shared<spdlog::sinks::basic_file_sink_mt>(path)), path_(path) {}

    std::string path_;
};

}  // namespace

void AddSpdlogCases(Cases& cases) {
    const char* const spdlog = "spdlog";
    cases.push_back(CaseOf<NullRecord>("record", spdlog));
    cases.push_back(CaseOf<FileRecord>("record-to-file", spdlog));
    cases.push_back(CaseOf<RecordedSending>("record-without-sink", spdlog));
}

}  // namespace Bench

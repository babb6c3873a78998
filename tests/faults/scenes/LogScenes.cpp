#include <VelCompanion/Owners.h>
#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>
#include <VelLog/StandardErrorSink.h>
#include <VelNet/SocketInitialization.h>
#include <support/TemporaryFolder.h>

#include <filesystem>
#include <initializer_list>
#include <string>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

// Switches all routers on for its lifetime.
class AllRecords {
public:
    AllRecords() { Switch(true); }
    ~AllRecords() { Switch(false); }
    AllRecords(const AllRecords&) = delete;
    AllRecords& operator=(const AllRecords&) = delete;

private:
    static void Switch(bool on) {
        for (const char* const category :
             {VelLog::CATEGORY_ERROR, VelLog::CATEGORY_CONNECTION_TRACE,
              VelLog::CATEGORY_PACKET_TRACE, VelLog::CATEGORY_VERBOSE_PACKET_TRACE})
            VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, on);
    }
};

void CauseRecords() {
    const Ends ends = Connected();
    SendWhole(*ends.client, "record");
    Require(ReceiveWhole(*ends.server, 6) == "record", "other bytes were received");
    OutcomeOf(VelNet::SOCKET_ERR_INVAL, [] { Stream()->Listen(); });
}

// Where the sinks' files are, and a link to one of them.
const std::filesystem::path& Folder() {
    static const Support::TemporaryFolder folder;
    static const bool isLinked = [] {
        std::filesystem::create_symlink("linked", folder.Path() / "link");
        return true;
    }();
    static_cast<void>(isLinked);
    return folder.Path();
}

// Made before processes are forked that play scenes: these end without removing it.
[[maybe_unused]] const std::filesystem::path& folderOfThisProcess = Folder();

std::filesystem::path NewFile(const char* name) {
    std::filesystem::path path = Folder() / name;
    std::filesystem::remove(path);
    return path;
}

std::string ToFile() {
    const VelNet::SocketInitialization layer;
    const AllRecords records;
    const std::filesystem::path path = NewFile("records");
    for (int time = 0; time < 2; ++time) {
        VelLog::FileSink sink(path.c_str());
        const VelCompanion::SinkInUse sinkInUse(sink);
        CauseRecords();
    }
    return "written\n";
}

std::string ThroughLinks() {
    const VelNet::SocketInitialization layer;
    const AllRecords records;
    NewFile("linked");
    for (const std::string& path : {(Folder() / "link").string(), std::string("/dev/stderr")}) {
        VelLog::FileSink sink(path.c_str());
        const VelCompanion::SinkInUse sinkInUse(sink);
        OutcomeOf(VelNet::SOCKET_ERR_INVAL, [] { Stream()->Listen(); });
    }
    return "written\n";
}

std::string ToStandardError() {
    const VelNet::SocketInitialization layer;
    const AllRecords records;
    VelLog::StandardErrorSink sink;
    const VelCompanion::SinkInUse sinkInUse(sink);
    CauseRecords();
    return "written\n";
}

class OwnSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord& record) override {
        ++count;
        Require(record.text != nullptr, "a record has no text");
    }
    int count = 0;
};

std::string ToOwnSink() {
    const VelNet::SocketInitialization layer;
    const AllRecords records;
    OwnSink sink;
    const VelCompanion::SinkInUse sinkInUse(sink);
    CauseRecords();
    return Line(sink.count > 0);
}

// A sink that cannot be opened, and a router that does not exist.
std::string Refusals() {
    std::string text = Line(VelLog::SetRouterEnabled("Network", "No Such Category", true));
    try {
        const VelLog::FileSink sink("/no-such-folder/records");
    } catch (const VelBase::ExceptionImpl<VelBase::Message>& failure) {
        text += Line(failure.GetMessage() != nullptr);
    }
    return text;
}

}  // namespace

std::vector<Scene> LogScenes() {
    return {{"log to a file", ToFile},
            {.name = "log through links", .play = ThroughLinks, .needsStandardError = true},
            {"log to standard error", ToStandardError},
            {"log to an own sink", ToOwnSink},
            {"log refused", Refusals}};
}

}  // namespace Faults

#include "Records.h"

#include <unistd.h>

#include <filesystem>

namespace Bench {

std::string TemporaryPath() {
    static int files = 0;
    const std::string name =
        "velsock-bench-" + std::to_string(::getpid()) + "-" + std::to_string(++files);
    return (std::filesystem::temp_directory_path() / name).string();
}

TemporaryFileSink::TemporaryFileSink() : path_(TemporaryPath()), sink_(path_.c_str()) {}

TemporaryFileSink::~TemporaryFileSink() {
    ::unlink(path_.c_str());
}

void SwitchRecordsOn(const char* category, VelLog::LogSink* sink) {
    VelLog::SetSink(sink);
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, true);
}

void SwitchRecordsOff(const char* category) {
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, false);
    VelLog::SetSink(nullptr);
}

}  // namespace Bench

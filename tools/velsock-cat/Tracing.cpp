#include "Tracing.h"

#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>
#include <VelLog/StandardErrorSink.h>

#include "Failure.h"
#include "LogOption.h"

namespace VelSockCat {

namespace {

std::unique_ptr<VelLog::LogSink> OpenLogFile(const std::string& path) {
    try {
        return std::make_unique<VelLog::FileSink>(path.c_str());
    } catch (const VelBase::Message& message) {
        throw VelSockTools::Failure(VelSockTools::ExitCode::LocalFailure, message);
    }
}

std::unique_ptr<VelLog::LogSink> OpenSink(const Arguments& arguments) {
    if (arguments.logFile) return OpenLogFile(*arguments.logFile);
    return std::make_unique<VelLog::StandardErrorSink>();
}

}  // namespace

Tracing::Tracing(const Arguments& arguments) {
    if (arguments.log) {
        logging_ = VelSockTools::StartLogging("velsock-cat", *arguments.log);
    } else {
        SwitchOn(arguments);
    }
}

void Tracing::SwitchOn(const Arguments& arguments) {
    sink_ = OpenSink(arguments);
    VelLog::SetSink(sink_.get());
    for (const std::string& category : arguments.categories) {
        VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category.c_str(), true);
    }
}

Tracing::~Tracing() {
    if (sink_ != nullptr) VelLog::SetSink(nullptr);
}

}  // namespace VelSockCat

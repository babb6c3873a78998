#include "LogOption.h"

#include "CommandLine.h"
#include "Failure.h"

namespace VelSockTools {

VelLogging::Logging StartLogging(const char* program, const std::string& text) {
    try {
        return VelLogging::Configure(text);
    } catch (const VelLogging::SinkError& error) {
        throw Failure(ExitCode::LocalFailure, error.what());
    } catch (const VelLogging::ConfigurationError& error) {
        RefuseUsage(program, error.what());
    }
}

}  // namespace VelSockTools

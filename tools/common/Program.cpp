#include "Program.h"

#include <exception>

#include "Events.h"
#include "StandardStreams.h"

namespace VelSockTools {

namespace {

// VelNet::Exception is a VelBase::Message that keeps its text elsewhere, so it is caught first.
ExitCode RunAndReport(const char* program, Work work, const std::vector<std::string>& words) {
    try {
        PrepareStandardStreams();
        return work(words);
    } catch (const Failure& failure) {
        return Report(program, failure);
    } catch (const VelNet::Exception& exception) {
        return Report(program, Failure(ExitCode::NotConnected, "cannot use a socket", exception));
    } catch (const VelBase::Message& message) {
        return Report(program, Failure(ExitCode::NotConnected, message));
    } catch (const std::exception& exception) {
        return Report(program, Failure(ExitCode::LocalFailure, exception.what()));
    }
}

}  // namespace

int RunProgram(const char* program, Work work, int count, char** words) {
    // A caller may omit even the program's name.
    const int first = count > 0 ? 1 : 0;
    return static_cast<int>(RunAndReport(program, work, {words + first, words + count}));
}

}  // namespace VelSockTools

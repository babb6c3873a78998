#include "VelLog/LogMessage.h"

#include "CurrentSink.h"
#include "Platform/System.h"
#include "VisibleText.h"

#include <chrono>
#include <utility>

namespace VelLog {

namespace {

constinit VelResource::MessageFormatter g_formatter;

// Whatever formatting and the sink do, the caller finds its error numbers unchanged and the
// formatter empty, and its thread is not cancelled meanwhile.
class CallerState {
public:
    explicit CallerState(VelResource::MessageFormatter& formatter) noexcept
        : formatter_(formatter) {}
    CallerState(const CallerState&) = delete;
    CallerState& operator=(const CallerState&) = delete;

    ~CallerState() {
        formatter_.Clear();
        System::RestoreErrorNumbers(numbers_);
        System::ReleaseCancellation(cancellation_);
    }

private:
    VelResource::MessageFormatter& formatter_;
    const int cancellation_ = System::HoldCancellation();
    const System::ErrorNumbers numbers_ = System::SaveErrorNumbers();
};

long long MicrosecondsSince1970() noexcept {
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

void WriteRecord(const Router& router, VelBase::WideText text, unsigned int connection) {
    const VelBase::WideText visible = MakeControlsVisible(std::move(text));
    WriteToSink(
        {router.Name(), router.Category(), visible.Units(), MicrosecondsSince1970(), connection});
}

}  // namespace

VelResource::MessageFormatter& GetMessageFormatter() noexcept {
    g_formatter.Clear();
    return g_formatter;
}

void LogMessage(Router& router, const char* format, VelResource::MessageFormatter& formatter,
                const char*, const char*, const char*, int) {
    const CallerState state(formatter);
    if (!IsRecordWanted()) return;
    try {
        WriteRecord(router, formatter.Format(format), formatter.Connection());
    } catch (...) {
        // A record that cannot be written is lost; the operation it reports goes on.
    }
}

}  // namespace VelLog

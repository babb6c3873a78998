#include "VelLogging/Configure.h"

#include "Plan.h"
#include "System.h"
#include "VelLogging/DaemonSinks.h"
#include "VelLogging/QueuedSink.h"
#include "VelLogging/RotatingFileSink.h"
#include "VelLogging/StreamSink.h"
#include "VelLogging/TeeSink.h"

#include <VelLog/LogControl.h>

#include <utility>
#include <vector>

namespace VelLogging {

namespace {

// Makes the sinks of a plan.
class Workshop {
public:
    std::unique_ptr<Sink> Make(const Plan& plan) {
        std::vector<std::unique_ptr<Sink>> sinks;
        for (const SinkPlan& sink : plan.sinks)
            sinks.push_back(MakeOrFail(sink));
        if (sinks.empty()) return std::make_unique<StandardErrorSink>();
        if (sinks.size() == 1) return std::move(sinks[0]);
        return std::make_unique<TeeSink>(std::move(sinks));
    }

    const RingSink* Ring() const noexcept { return ring_; }

private:
    std::unique_ptr<Sink> MakeOrFail(const SinkPlan& plan) {
        try {
            return WithQueue(plan, MakeBare(plan));
        } catch (const ConfigurationError&) {
            throw;
        } catch (const std::runtime_error& failure) {
            throw SinkError(FailureText(plan.text, plan.position, failure.what()), plan.position);
        }
    }

    static std::unique_ptr<Sink> WithQueue(const SinkPlan& plan, std::unique_ptr<Sink> sink) {
        if (plan.queue == 0) return sink;
        return std::make_unique<QueuedSink>(std::move(sink), static_cast<std::size_t>(plan.queue));
    }

    std::unique_ptr<Sink> MakeBare(const SinkPlan& plan) {
        const Format plain = plan.format.value_or(Format::Plain);
        if (plan.kind == "file")
            return std::make_unique<RotatingFileSink>(
                FileOptions{plan.target, plain, plan.size, static_cast<unsigned int>(plan.keep)});
        if (plan.kind == "syslog")
            return std::make_unique<SyslogSink>(DaemonOptions{plan.tag, plan.target},
                                                plan.format.value_or(Format::Text),
                                                plan.facility.value_or(SyslogSink::FacilityUser));
        if (plan.kind == "journal")
            return std::make_unique<JournalSink>(DaemonOptions{plan.tag, plan.target});
        if (plan.kind == "debugger") return std::make_unique<DebuggerSink>(plain);
        if (plan.kind == "ring") return MakeRing(plan);
        return std::make_unique<StandardErrorSink>(plain);
    }

    std::unique_ptr<Sink> MakeRing(const SinkPlan& plan) {
        if (ring_ != nullptr) Fail(plan.text, plan.position, "there is another ring already");
        if (plan.size > MostBytes) Fail(plan.text, plan.position, "a ring has at most 1G");
        auto ring = std::make_unique<RingSink>(static_cast<std::size_t>(plan.size),
                                               plan.format.value_or(Format::Text));
        ring_ = ring.get();
        return ring;
    }

    static constexpr unsigned long long MostBytes = 1ULL << 30;

    const RingSink* ring_ = nullptr;
};

}  // namespace

Logging::Logging(std::unique_ptr<Sink> sink, const RingSink* ring) noexcept
    : sink_(std::move(sink)), ring_(ring) {
    if (sink_ != nullptr) VelLog::SetSink(sink_.get());
}

Logging::Logging(Logging&& other) noexcept
    : sink_(std::move(other.sink_)), ring_(std::exchange(other.ring_, nullptr)) {}

Logging& Logging::operator=(Logging&& other) noexcept {
    if (this != &other) {
        const Logging former(std::move(*this));
        sink_ = std::move(other.sink_);
        ring_ = std::exchange(other.ring_, nullptr);
    }
    return *this;
}

Logging::~Logging() {
    if (sink_ == nullptr) return;
    VelLog::LogSink* const set = VelLog::SetSink(nullptr);
    if (set != sink_.get()) VelLog::SetSink(set);
}

void Logging::Reopen() const noexcept {
    if (sink_ != nullptr) sink_->Reopen();
}

unsigned long long Logging::Lost() const noexcept {
    return sink_ != nullptr ? sink_->Lost() : 0;
}

Logging Configure(std::string_view text, std::string_view more) {
    Plan plan;
    AddTo(plan, text);
    AddTo(plan, more);
    Workshop workshop;
    std::unique_ptr<Sink> sink = workshop.Make(plan);
    for (const Switch& wanted : plan.switches)
        VelLog::SetRouterEnabled(wanted.router, wanted.category, wanted.isOn);
    return {std::move(sink), workshop.Ring()};
}

Logging ConfigureFromEnvironment(const char* variable, std::string_view otherwise) {
    const std::string text = System::Environment(variable);
    if (!text.empty()) return Configure(text);
    if (!otherwise.empty()) return Configure(otherwise);
    return {nullptr, nullptr};
}

}  // namespace VelLogging

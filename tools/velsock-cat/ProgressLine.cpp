#include "ProgressLine.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "Events.h"
#include "StandardStreams.h"

namespace VelSockCat {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds BeforeFirst(1000);
constexpr milliseconds BetweenTwo(500);
constexpr int Width = 60;

bool IsWanted(const Arguments& arguments) {
    const bool readsTerminal =
        arguments.direction != Direction::ReceiveOnly && VelSockTools::InputIsTerminal();
    const bool dumpsThere = arguments.showsBytes && VelSockTools::OutputIsTerminal();
    return VelSockTools::ErrorsAreOnTerminal() && !readsTerminal && !dumpsThere &&
           arguments.categories.empty() && !VelSockTools::IsToldInJson();
}

std::optional<unsigned long long> SizeOf(const Arguments& arguments) {
    if (arguments.direction == Direction::ReceiveOnly) return {};
    return VelSockTools::InputSize();
}

std::string Clock(double seconds) {
    const auto whole = static_cast<unsigned long long>(std::ceil(seconds));
    std::array<char, 40> text = {};
    std::snprintf(text.data(), text.size(), "%02llu:%02llu:%02llu", whole / 3600, whole / 60 % 60,
                  whole % 60);
    return text.data();
}

// Over what stood there before.
void Write(const std::string& line) {
    std::fprintf(stderr, "\r%-*s\r%s", Width, "", line.c_str());
    std::fflush(stderr);
}

}  // namespace

ProgressLine::ProgressLine(const Traffic& traffic, const Arguments& arguments)
    : traffic_(traffic),
      size_(SizeOf(arguments)),
      outputIsTerminal_(VelSockTools::OutputIsTerminal()) {
    if (IsWanted(arguments)) thread_ = std::thread([this] { Run(); });
}

ProgressLine::~ProgressLine() {
    Stop();
}

void ProgressLine::Stop() noexcept {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        stops_ = true;
    }
    stopping_.notify_one();
    thread_.join();
}

void ProgressLine::Run() {
    if (!Await(BeforeFirst)) return;
    do {
        const Totals totals = traffic_.Current();
        if (outputIsTerminal_ && totals.received > 0) break;
        Write(LineFor(totals));
    } while (Await(BetweenTwo));
    Write("");
}

bool ProgressLine::Await(milliseconds time) {
    std::unique_lock lock(mutex_);
    return !stopping_.wait_for(lock, time, [this] { return stops_; });
}

std::string ProgressLine::LineFor(const Totals& totals) const {
    const auto passed = static_cast<double>(totals.sent + totals.received);
    const double rate = passed / totals.lasted.count();
    std::string line = SizeText(passed) + ", " + SizeText(rate) + "/s";
    if (!size_ || totals.sent == 0) return line;
    const auto sent = static_cast<double>(totals.sent);
    const auto left = *size_ > totals.sent ? static_cast<double>(*size_) - sent : 0;
    return line + ", " + Clock(left / (sent / totals.lasted.count())) + " left";
}

}  // namespace VelSockCat

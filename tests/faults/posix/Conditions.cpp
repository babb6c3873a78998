#include "faults/posix/Conditions.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

namespace Faults {

namespace {

constexpr rlim_t RoomForCrowd = CrowdEnd + 1'000;
// Where closed streams wait, out of the way of what a scene opens.
constexpr int KeepingPlace = 200;

bool IsOpen(int descriptor) noexcept {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

rlimit DescriptorLimit() noexcept {
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    return limit;
}

bool SetDescriptorLimit(rlim_t now) noexcept {
    const rlim_t most = std::max(DescriptorLimit().rlim_max, now);
    const rlimit limit = {.rlim_cur = now, .rlim_max = most};
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

// The number below which so many are free.
rlim_t LimitThatLeaves(unsigned int count) noexcept {
    int number = 0;
    for (unsigned int left = count; left > 0 || IsOpen(number); ++number) {
        if (!IsOpen(number)) --left;
    }
    return static_cast<rlim_t>(number);
}

}  // namespace

std::string TextOf(const Conditions& conditions) {
    std::string text;
    for (const unsigned int stream : {0U, 1U, 2U}) {
        if ((conditions.closedStreams >> stream & 1U) != 0)
            text += ", stream " + std::to_string(stream) + " closed";
    }
    if (conditions.isCrowded) text += ", in a crowd";
    if (conditions.descriptorsLeft != Conditions::NoLimit)
        text += ", " + std::to_string(conditions.descriptorsLeft) + " descriptors left";
    if (conditions.signals.perSecond > 0)
        text += ", " + std::to_string(conditions.signals.perSecond) + " signals a second" +
                (conditions.signals.restarts ? " that restart" : "");
    return text;
}

bool AllowCrowds() {
    return DescriptorLimit().rlim_cur >= RoomForCrowd || SetDescriptorLimit(RoomForCrowd);
}

Imposed::Imposed(const Conditions& conditions)
    : conditions_(conditions), formerLimit_(DescriptorLimit().rlim_cur) {
    if (conditions.closedStreams != 0) CloseStreams();
    if (conditions.isCrowded) MakeCrowd();
    if (conditions.signals.perSecond > 0)
        storm_ = std::make_unique<Support::SignalStorm>(conditions.signals);
    if (conditions.descriptorsLeft != Conditions::NoLimit) LimitDescriptors();
}

void Imposed::CloseStreams() {
    for (int stream = 0; stream < 3; ++stream) {
        if ((conditions_.closedStreams >> stream & 1U) == 0) continue;
        kept_[stream] = ::fcntl(stream, F_DUPFD_CLOEXEC, KeepingPlace);
        ::close(stream);
    }
}

void Imposed::MakeCrowd() {
    crowd_.reserve(CrowdEnd);
    for (int made = ::open("/dev/null", O_RDONLY | O_CLOEXEC); made >= 0;
         made = ::fcntl(made, F_DUPFD_CLOEXEC, 0)) {
        crowd_.push_back(made);
        if (made >= CrowdEnd - 1) break;
    }
}

void Imposed::LimitDescriptors() const {
    SetDescriptorLimit(LimitThatLeaves(conditions_.descriptorsLeft));
}

bool Imposed::IsStreamTaken() const noexcept {
    for (int stream = 0; stream < 3; ++stream) {
        if (kept_[stream] >= 0 && IsOpen(stream)) return true;
    }
    return false;
}

Imposed::~Imposed() {
    if (conditions_.descriptorsLeft != Conditions::NoLimit) SetDescriptorLimit(formerLimit_);
    for (const int member : crowd_)
        ::close(member);
    for (int stream = 0; stream < 3; ++stream) {
        if (kept_[stream] < 0) continue;
        ::dup2(kept_[stream], stream);
        ::close(kept_[stream]);
    }
}

}  // namespace Faults

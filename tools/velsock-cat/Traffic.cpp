#include "Traffic.h"

#include <array>
#include <cstdio>

#include "StandardStreams.h"

namespace VelSockCat {

namespace {

using Seconds = std::chrono::duration<double>;

std::string TimeText(Seconds time) {
    std::array<char, 32> text = {};
    const bool isShort = time < Seconds(1);
    std::snprintf(text.data(), text.size(), isShort ? "%.3f ms" : "%.3f s",
                  isShort ? time.count() * 1000 : time.count());
    return text.data();
}

double RateOf(const Totals& totals) {
    const double seconds = totals.lasted.count();
    return seconds > 0 ? static_cast<double>(totals.sent + totals.received) / seconds : 0;
}

// The number of a connection stands in front of its bytes.
std::string PrefixOf(int number, const char* direction) {
    if (number == 0) return direction;
    return std::string("#").append(std::to_string(number)).append(" ").append(direction);
}

// Each transfer as a whole, whichever connection it belongs to.
void Show(HexDump& dump, std::string_view bytes) {
    static std::mutex output;
    const std::lock_guard lock(output);
    VelSockTools::WriteOutput(dump.Lines(bytes));
}

}  // namespace

std::string SizeText(double bytes) {
    constexpr std::array<const char*, 4> units{"B", "kB", "MB", "GB"};
    std::size_t unit = 0;
    for (; bytes >= 1000 && unit + 1 < units.size(); ++unit)
        bytes /= 1000;
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
    return text.data();
}

Traffic::Traffic(const Arguments& arguments, int number)
    : showsBytes_(arguments.showsBytes),
      showsTotals_(arguments.showsTotals),
      number_(number),
      sentBytes_(PrefixOf(number, ">")),
      receivedBytes_(PrefixOf(number, "<")) {}

Traffic::~Traffic() {
    End();
}

void Traffic::Begin(Seconds connecting) {
    const std::lock_guard lock(mutex_);
    totals_.connecting = connecting;
    begin_ = Clock::now();
}

void Traffic::Sent(std::string_view bytes) {
    {
        const std::lock_guard lock(mutex_);
        totals_.sent += bytes.size();
    }
    if (showsBytes_) Show(sentBytes_, bytes);
}

void Traffic::Received(std::string_view bytes) {
    {
        const std::lock_guard lock(mutex_);
        totals_.received += bytes.size();
        if (!totals_.firstByte) totals_.firstByte = Clock::now() - begin_;
    }
    if (showsBytes_) Show(receivedBytes_, bytes);
}

Totals Traffic::Current() const {
    const std::lock_guard lock(mutex_);
    Totals totals = totals_;
    totals.lasted = Clock::now() - begin_;
    return totals;
}

void Traffic::End() noexcept try {
    {
        const std::lock_guard lock(mutex_);
        if (hasEnded_) return;
        hasEnded_ = true;
    }
    if (showsTotals_ || VelSockTools::IsToldInJson()) VelSockTools::Tell(EventOf(Current()));
} catch (const std::exception&) {
    return;  // the totals alone are lost
}

VelSockTools::Event Traffic::EventOf(const Totals& totals) const {
    std::string text = Label() + "sent " + std::to_string(totals.sent) + " bytes, received " +
                       std::to_string(totals.received) + " bytes in " + TimeText(totals.lasted) +
                       " (" + SizeText(RateOf(totals)) + "/s)";
    VelSockTools::JsonObject members;
    if (number_ != 0) members.AddNumber("connection", number_);
    members.Add("sent", std::to_string(totals.sent));
    members.Add("received", std::to_string(totals.received));
    members.AddDecimal("seconds", totals.lasted.count());
    members.AddDecimal("bytesPerSecond", RateOf(totals));
    if (totals.connecting) {
        text += "; connected in " + TimeText(*totals.connecting);
        members.AddDecimal("secondsToConnect", totals.connecting->count());
    }
    if (totals.firstByte) {
        text += "; first byte after " + TimeText(*totals.firstByte);
        members.AddDecimal("secondsToFirstByte", totals.firstByte->count());
    }
    return {"ended", text, members};
}

std::string Traffic::Label() const {
    if (number_ == 0) return "";
    return std::string("connection ").append(std::to_string(number_)).append(": ");
}

}  // namespace VelSockCat

#include "TimeText.h"

#include <chrono>
#include <cstring>

namespace VelSockTrace {

namespace {

constexpr std::int64_t Second = 1'000'000;

// Returns a number of so many digits, or -1.
int Number(const char* text, int digits) noexcept {
    int number = 0;
    for (; digits > 0; --digits, ++text) {
        const auto digit = static_cast<unsigned char>(*text - '0');
        if (digit > 9) return -1;
        number = 10 * number + digit;
    }
    return number;
}

std::optional<std::int64_t> Midnight(const char* date) noexcept {
    using namespace std::chrono;
    const int y = Number(date, 4);
    const int m = Number(date + 5, 2);
    const int d = Number(date + 8, 2);
    if (y < 0 || m < 0 || d < 0 || date[4] != '-' || date[7] != '-') return {};
    const year_month_day day(year(y), month(static_cast<unsigned>(m)),
                             std::chrono::day(static_cast<unsigned>(d)));
    if (!day.ok()) return {};
    return duration_cast<microseconds>(sys_days(day).time_since_epoch()).count();
}

void Put(char* text, int digits, std::int64_t number) noexcept {
    for (; digits > 0; number /= 10)
        text[--digits] = static_cast<char>('0' + number % 10);
}

}  // namespace

std::optional<std::int64_t> TimeReader::Read(std::string_view text) noexcept {
    if (text.size() != TimeTextSize || text[10] != 'T' || text[13] != ':' || text[16] != ':' ||
        text[19] != '.' || text[26] != 'Z')
        return {};
    if (std::memcmp(date_, text.data(), sizeof date_) != 0) {
        const auto midnight = Midnight(text.data());
        if (!midnight) return {};
        midnight_ = *midnight;
        std::memcpy(date_, text.data(), sizeof date_);
    }
    const int hour = Number(text.data() + 11, 2);
    const int minute = Number(text.data() + 14, 2);
    const int second = Number(text.data() + 17, 2);
    const int fraction = Number(text.data() + 20, 6);
    // A leap second is written as the sixtieth.
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60 ||
        fraction < 0)
        return {};
    return midnight_ + (hour * 3600 + minute * 60 + second) * Second + fraction;
}

std::optional<std::int64_t> ReadTime(const std::string& text) {
    static constexpr std::string_view whole = "0000-01-01T00:00:00.000000Z";
    std::string_view given(text);
    if (!given.empty() && given.back() == 'Z') given.remove_suffix(1);
    if (given.size() < 10 || given.size() > whole.size() - 1) return {};
    return TimeReader().Read(std::string(given).append(whole.substr(given.size())));
}

std::string TimeText(std::int64_t microsecondsSince1970) {
    using namespace std::chrono;
    const sys_time<microseconds> time{microseconds(microsecondsSince1970)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const auto clock = (time - day).count();
    std::string text = "0000-00-00T00:00:00.000000Z";
    Put(text.data(), 4, int(date.year()));
    Put(text.data() + 5, 2, unsigned(date.month()));
    Put(text.data() + 8, 2, unsigned(date.day()));
    Put(text.data() + 11, 2, clock / (3600 * Second));
    Put(text.data() + 14, 2, clock / (60 * Second) % 60);
    Put(text.data() + 17, 2, clock / Second % 60);
    Put(text.data() + 20, 6, clock % Second);
    return text;
}

}  // namespace VelSockTrace

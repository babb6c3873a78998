#include "Time.h"

#include <chrono>
#include <cstddef>

namespace VelLogging {

namespace {

void Put(std::string& text, std::size_t end, long long number) {
    for (; number > 0; number /= 10)
        text[--end] = static_cast<char>('0' + number % 10);
}

}  // namespace

std::string TimeText(long long microsecondsSince1970) {
    using namespace std::chrono;
    const sys_time<microseconds> time{microseconds(microsecondsSince1970)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    std::string text = "0000-00-00T00:00:00.000000Z";
    Put(text, 4, int(date.year()));
    Put(text, 7, unsigned(date.month()));
    Put(text, 10, unsigned(date.day()));
    Put(text, 13, clock.hours().count());
    Put(text, 16, clock.minutes().count());
    Put(text, 19, clock.seconds().count());
    Put(text, 26, clock.subseconds().count());
    return text;
}

}  // namespace VelLogging

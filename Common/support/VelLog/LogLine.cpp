#include "LogLine.h"

#include "Text/Utf8.h"
#include "Text/WideLength.h"

#include <chrono>
#include <string>

namespace VelLog {

namespace {

constexpr char LineFeed = '\n';

// Room for what precedes a message, and the ends of the line.
constexpr std::size_t UsualHead = 80;

// So many digits, with leading zeros.
void PutNumber(char* text, int digits, unsigned int number) noexcept {
    for (; digits > 0; number /= 10)
        text[--digits] = static_cast<char>('0' + number % 10);
}

// The time of a record, from the year 0 to 9999.
struct TimeText {
    char text[sizeof "YYYY-MM-DDThh:mm:ss.uuuuuuZ"] = "0000-00-00T00:00:00.000000Z";

    explicit TimeText(long long microsecondsSince1970) noexcept {
        using namespace std::chrono;
        const sys_time<microseconds> time{microseconds(microsecondsSince1970)};
        const auto day = floor<days>(time);
        const year_month_day date(day);
        const hh_mm_ss clock(time - day);
        PutNumber(text, 4, static_cast<unsigned int>(int(date.year())));
        PutNumber(text + 5, 2, unsigned(date.month()));
        PutNumber(text + 8, 2, unsigned(date.day()));
        PutNumber(text + 11, 2, static_cast<unsigned int>(clock.hours().count()));
        PutNumber(text + 14, 2, static_cast<unsigned int>(clock.minutes().count()));
        PutNumber(text + 17, 2, static_cast<unsigned int>(clock.seconds().count()));
        PutNumber(text + 20, 6, static_cast<unsigned int>(clock.subseconds().count()));
    }
};

}  // namespace

void WriteLogLine(System::LogFile file, const LogRecord& record, bool& isCut) {
    const std::string message = Text::Utf8FromUtf16({record.text, Text::WideLength(record.text)});
    std::string line;
    line.reserve(UsualHead + message.size());
    if (isCut) line += LineFeed;
    line.append(TimeText(record.microsecondsSince1970).text).append(" ");
    line.append(record.router).append("/").append(record.category).append(": ");
    line.append(message) += LineFeed;
    const std::size_t written = System::WriteLogFile(file, line.data(), line.size());
    if (written > 0) isCut = line[written - 1] != LineFeed;
}

}  // namespace VelLog

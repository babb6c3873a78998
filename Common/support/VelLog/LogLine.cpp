#include "LogLine.h"

#include "VelBase/TextConversions.h"

#include <chrono>
#include <cstdio>
#include <string>

namespace VelLog {

namespace {

constexpr char LineFeed = '\n';

std::string RenderTime(long long microsecondsSince1970) {
    using namespace std::chrono;
    const sys_time<microseconds> time{microseconds(microsecondsSince1970)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ", int(date.year()),
                  unsigned(date.month()), unsigned(date.day()), int(clock.hours().count()),
                  int(clock.minutes().count()), int(clock.seconds().count()),
                  int(clock.subseconds().count()));
    return text;
}

}  // namespace

void WriteLogLine(System::LogFile file, const LogRecord& record, bool& isCut) {
    std::string line(isCut ? 1 : 0, LineFeed);
    line.append(RenderTime(record.microsecondsSince1970));
    line.append(" ").append(record.router).append("/").append(record.category).append(": ");
    line.append(VelBase::WideCharToUTF8(record.text, false).c_str()) += LineFeed;
    const std::size_t written = System::WriteLogFile(file, line.data(), line.size());
    if (written > 0) isCut = line[written - 1] != LineFeed;
}

}  // namespace VelLog

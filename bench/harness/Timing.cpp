#include "Timing.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

namespace Bench {
namespace {

constexpr std::size_t Repetitions = 101;
constexpr std::size_t WarmUpRepetitions = 2;
// The fastest of them counts: the others were disturbed more.
constexpr int RunsInARepetition = 5;

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::duration<double, std::nano>;

// One case with what it took in each repetition.
struct Contender {
    Case timed;
    std::unique_ptr<Work> work;
    std::vector<double> times;
};

Nanoseconds TimeOfRun(Work& work) {
    work.Prepare();
    const auto begin = Clock::now();
    work.Run();
    const Nanoseconds time = Clock::now() - begin;
    work.Restore();
    return time;
}

double TimeOfOperation(const Contender& contender) {
    Nanoseconds fastest = Nanoseconds::max();
    for (int run = 0; run < RunsInARepetition; ++run)
        fastest = std::min(fastest, TimeOfRun(*contender.work));
    return fastest.count() / contender.timed.operations;
}

// Each repetition begins with another one, so that none always follows the same neighbour.
void Repeat(std::vector<Contender>& row, std::size_t repetition) {
    for (std::size_t turn = 0; turn < row.size(); ++turn) {
        Contender& contender = row[(repetition + turn) % row.size()];
        contender.times.push_back(TimeOfOperation(contender));
    }
}

void Time(std::vector<Contender>& row) {
    for (std::size_t repetition = 0; repetition < WarmUpRepetitions; ++repetition)
        Repeat(row, repetition);
    for (Contender& contender : row)
        contender.times.clear();
    for (std::size_t repetition = 0; repetition < Repetitions; ++repetition)
        Repeat(row, repetition);
}

double Quartile(std::vector<double> values, std::size_t quarter) {
    const auto place = static_cast<std::ptrdiff_t>((values.size() - 1) * quarter / 4);
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
}

void Print(const Contender& contender, const std::vector<double>& baseline) {
    std::vector<double> ratios = contender.times;
    for (std::size_t index = 0; index < ratios.size(); ++index)
        ratios[index] /= baseline[index];
    const char* const row = contender.timed.row.c_str();
    const char* const subject = contender.timed.subject.c_str();
    std::printf("%s %s nanoseconds %.1f\n", row, subject, Quartile(contender.times, 2));
    std::printf("%s %s ratio %.3f %.3f %.3f\n", row, subject, Quartile(ratios, 1),
                Quartile(ratios, 2), Quartile(ratios, 3));
}

void TimeRow(const Cases& cases, std::string_view name) {
    std::vector<Contender> row;
    for (const Case& timed : cases)
        if (timed.row == name) row.push_back({timed, timed.make(), {}});
    Time(row);
    for (const Contender& contender : row)
        Print(contender, row.front().times);
    std::fflush(stdout);
}

}  // namespace

void TimeCases(const Cases& cases) {
    std::string_view name;
    for (const Case& timed : cases) {
        if (timed.row == name) continue;
        name = timed.row;
        TimeRow(cases, name);
    }
}

}  // namespace Bench

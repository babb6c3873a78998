#include "Trend.h"

#include <utility>

namespace Soak {

namespace {

// So that what is remembered here does not grow itself.
constexpr std::size_t MostRounds = 200'000;

}  // namespace

Trend::Trend(std::string name, double allowedRise) : name_(std::move(name)), allowed_(allowedRise) {
    values_.reserve(MostRounds);
}

// By least squares.
double Trend::Slope() const {
    const std::size_t first = FirstThatCounts();
    const auto count = static_cast<double>(values_.size() - first);
    const double middle = (count - 1) / 2;
    double covariance = 0;
    double variance = 0;
    for (std::size_t index = first; index < values_.size(); ++index) {
        const double distance = static_cast<double>(index - first) - middle;
        covariance += distance * values_[index];
        variance += distance * distance;
    }
    return variance > 0 ? covariance / variance : 0;
}

double Trend::Rise() const {
    const std::size_t counted = values_.size() - FirstThatCounts();
    return Slope() * static_cast<double>(counted > 0 ? counted - 1 : 0);
}

std::string Trend::Report() const {
    const auto text = [](double number) {
        return std::to_string(static_cast<long long>(number + (number < 0 ? -0.5 : 0.5)));
    };
    if (values_.empty()) return name_ + ": no rounds";
    return name_ + ": " + text(values_[FirstThatCounts()]) + " to " + text(values_.back()) +
           ", rise " + text(Rise()) + " of " + text(allowed_) + " allowed" +
           (Rises() ? ": TOO MUCH" : "");
}

}  // namespace Soak

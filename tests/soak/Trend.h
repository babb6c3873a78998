// Whether a quantity rises from round to round.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Soak {

class Trend {
public:
    // What it may rise by over all rounds that count, by the line that fits them best.
    Trend(std::string name, double allowedRise);

    void Add(double value) { values_.push_back(value); }
    bool Rises() const { return Rise() > allowed_; }
    // "bytes allocated: 70144 to 70144, rise 0 of 8192 allowed"
    std::string Report() const;

private:
    // While a quarter of the rounds lasts, caches fill and threads get their parts of the heap.
    std::size_t FirstThatCounts() const { return values_.size() / 4; }
    double Slope() const;
    double Rise() const;

    std::string name_;
    double allowed_;
    std::vector<double> values_;
};

}  // namespace Soak

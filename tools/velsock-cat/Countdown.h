// Counts what is still to come.
#pragma once

#include <optional>

namespace VelSockCat {

// Never ends without a number.
class Countdown {
public:
    explicit Countdown(const std::optional<unsigned int>& number) : left_(number) {}

    bool Next() {
        if (!left_) return true;
        if (*left_ == 0) return false;
        --*left_;
        return true;
    }

private:
    std::optional<unsigned int> left_;
};

}  // namespace VelSockCat

// What a process may lack, or be plagued with, while a scene is played.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/posix/ProcessState.h"
#include "support/posix/SignalStorm.h"

namespace Faults {

inline constexpr int CrowdEnd = Support::ProcessState::HighDescriptors;

struct Conditions {
    static constexpr unsigned int AllStreams = 7;
    static constexpr unsigned int NoLimit = ~0U;

    unsigned int closedStreams = 0;          // a bit for each standard stream, the input's lowest
    bool isCrowded = false;                  // all numbers of descriptors below CrowdEnd are taken
    unsigned int descriptorsLeft = NoLimit;  // how many more the process may have
    Support::SignalStorm::Kind signals = {};

    bool AreUsual() const noexcept {
        return closedStreams == 0 && !isCrowded && descriptorsLeft == NoLimit &&
               signals.perSecond == 0;
    }
};

std::string TextOf(const Conditions& conditions);

// Raises the limit of descriptors for a crowd. False if the system does not allow that.
bool AllowCrowds();

// The conditions hold for its lifetime.
class Imposed {
public:
    explicit Imposed(const Conditions& conditions);
    ~Imposed();
    Imposed(const Imposed&) = delete;
    Imposed& operator=(const Imposed&) = delete;

    // Whether something has taken the number of a closed stream, and kept it.
    bool IsStreamTaken() const noexcept;

private:
    void CloseStreams();
    void MakeCrowd();
    void LimitDescriptors() const;

    const Conditions conditions_;
    const unsigned long formerLimit_;
    int kept_[3] = {-1, -1, -1};  // the closed streams
    std::vector<int> crowd_;
    std::unique_ptr<Support::SignalStorm> storm_;
};

}  // namespace Faults

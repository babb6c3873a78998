// The frame of the targets whose input is a program: a list of operations on a few sockets.
#pragma once

#include <array>

#include "Fuzzing.h"

namespace Fuzz {

// What a target can do with one of its slots.
template <class Target, class Slot>
struct Operation {
    void (Target::*run)(Slot&);
    bool needsSocket = true;
};

constexpr int LongestProgram = 60;

// Takes operations, and the slots that they are for, off the input and runs them. Whoever needs a
// socket where there is none is passed over. In the end every slot is dropped. The target compares
// what the sockets did with its model after each step.
template <class Target, class Slot, std::size_t Slots, std::size_t Count>
void Play(Target& target, Input& input, std::array<Slot, Slots>& slots,
          const std::array<Operation<Target, Slot>, Count>& operations,
          void (Target::*drop)(Slot&)) {
    for (int step = 0; step < LongestProgram && !input.IsEmpty(); ++step) {
        const auto& operation = operations[input.Below(Count)];
        Slot& slot = slots[input.Below(Slots)];
        if (slot.socket || !operation.needsSocket) (target.*operation.run)(slot);
        target.Compare();
    }
    for (Slot& slot : slots)
        (target.*drop)(slot);
    target.Compare();
}

}  // namespace Fuzz

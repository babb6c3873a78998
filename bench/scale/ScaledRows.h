// Costs that could grow, a file for each kind of growth. Every function appends its cases, whose
// subjects are the numbers that grow.
#pragma once

#include "harness/Work.h"

#include <initializer_list>
#include <string>

namespace Bench {

void AddSocketGrowth(Cases& cases);
void AddCollectionGrowth(Cases& cases);
void AddCacheGrowth(Cases& cases);
void AddByteGrowth(Cases& cases);
void AddThreadGrowth(Cases& cases);
// Writes hosts of many addresses to the file, which is to be this process's table of hosts.
void AddAddressGrowth(Cases& cases, const std::string& hostsFile);

// One case for each number.
template <class Scene, class... Arguments>
void AddGrowth(Cases& cases, const char* row, std::initializer_list<int> numbers,
               Arguments... arguments) {
    for (const int number : numbers)
        cases.push_back(CaseOf<Scene>(row, std::to_string(number), number, arguments...));
}

// Its operations return whether they did their work.
class ScaledScene {
public:
    static constexpr int Operations = 1;
    static constexpr int Result = 1;

    void Prepare() const noexcept {}
};

}  // namespace Bench

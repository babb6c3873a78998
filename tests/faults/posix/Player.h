// One scene in one process: plays it, and judges what became of it and of the process.
#pragma once

#include <VelLog/LogSink.h>

#include <optional>
#include <string>

#include "faults/posix/Campaign.h"
#include "faults/posix/Injector.h"
#include "faults/posix/Ledger.h"

namespace Faults {

enum class Ending { Completed, Exception, OutOfMemory, Cancelled, Wrong };

struct Outcome {
    Ending ending;
    std::string text;  // what the scene returned, or what is wrong
};

class Player {
public:
    Player(const Scene& scene, bool withRecords, Planted planted);

    // Without a fault, until nothing is made for the first time any more.
    void WarmUp();
    // Instead of that: the case's run is the first one.
    void BeginCold();
    // With the fault, and once more without it. Empty text: all is well.
    Outcome PlayCase(const Fault& fault);

    Outcome Play(const Fault& fault);
    const Injector& Faulty() const noexcept { return injector_; }

private:
    class CountingSink : public VelLog::LogSink {
    public:
        void Write(const VelLog::LogRecord& record) override;
        unsigned int count = 0;
    };

    // How the process of a fork ends that has seen something wrong.
    static constexpr int LeftOverInFork = 1;
    static constexpr int FailsInFork = 2;
    static constexpr int OtherTextInFork = 3;

    Outcome PlayInSurroundings();
    Outcome PlayInThread();
    static void* RunThread(void* play);
    int LiveInFork();
    std::string EndOfFork() const;
    std::string WrongOf(const Fault& fault, const Outcome& outcome) const;
    std::string Judge(const Fault& fault, bool isRetry);
    bool IsHeapRight(const HeapUse& growth) const noexcept;
    void Plant();

    const Scene& scene_;
    const bool withRecords_;
    const Planted planted_;
    CountingSink sink_;
    Injector injector_;
    std::string usual_;
    HeapUse usualGrowth_ = {};
    Ledger before_;
    bool isSinkForeign_ = false;
    bool isStreamTaken_ = false;
};

}  // namespace Faults

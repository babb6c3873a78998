#include "Reading.h"

#include <cstdio>
#include <string>

#include "Failure.h"
#include "Progress.h"

namespace VelSockTrace {

namespace {

std::string Counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

void Tell(const Fault& fault, const char* one, const char* many) {
    if (fault.count == 0) return;
    std::string lines = "velsock-trace: " + Counted(fault.count, one, many) + "\n";
    for (const Fault::Example& example : fault.examples) {
        lines += "  " + example.path + ", line " + std::to_string(example.line) + ": " +
                 example.text + "\n";
    }
    if (fault.count > fault.examples.size()) lines += "  ...\n";
    std::fputs(lines.c_str(), stderr);
}

class Surveyor : public Observer {
public:
    explicit Surveyor(const Arguments& arguments) : arguments_(arguments) {}

    void Forgotten(const Conversation& conversation) override {
        const unsigned int number = arguments_.number;
        const bool isShown =
            number == 0 || number == conversation.number || shownByOtherEnd_ == conversation.number;
        if (isShown && arguments_.filter.Passes(conversation))
            survey.wanted.emplace(conversation.number, conversation);
    }

    void Joined(unsigned int number, unsigned int otherEnd) override {
        survey.joints[otherEnd] = number;
        if (otherEnd == arguments_.number) shownByOtherEnd_ = number;
    }

    Survey survey;

private:
    const Arguments& arguments_;
    unsigned int shownByOtherEnd_ = 0;
};

}  // namespace

Survey ReadSurvey(const Arguments& arguments) {
    Logs logs(arguments.files, false);
    Surveyor surveyor(arguments);
    Conversations conversations(surveyor);
    const std::uint64_t strayFailures = ReadAll(logs, conversations);
    TellFaults(logs.FaultsSoFar(), strayFailures);
    if (surveyor.survey.wanted.empty()) {
        throw VelSockTools::Failure(VelSockTools::ExitCode::NothingFound,
                                    "there is no such conversation");
    }
    return std::move(surveyor.survey);
}

void Play(const Arguments& arguments, const Survey& survey, Player& player) {
    Logs logs(arguments.files, false);
    Playback playback(survey.wanted, player);
    Conversations conversations(playback, survey.joints);
    ReadAll(logs, conversations);
}

std::uint64_t ReadAll(Logs& logs, Conversations& conversations) {
    Progress progress(logs);
    std::uint64_t strayFailures = 0;
    for (Logs::Next next = logs.Take(); next.record != nullptr; next = logs.Take()) {
        const bool isTaken = conversations.Take(*next.record, next.log);
        if (!isTaken && next.record->kind == RecordKind::Failure) ++strayFailures;
        progress.Step();
    }
    conversations.Finish();
    return strayFailures;
}

void TellFaults(const Faults& faults, std::uint64_t strayFailures) {
    Tell(faults.foreign, "line is not of this library's log",
         "lines are not of this library's log");
    Tell(faults.broken, "line has no record that can be understood",
         "lines have no record that can be understood");
    Tell(faults.damaged, "record lacks data", "records lack data");
    Tell(faults.cut, "line is too long and was cut", "lines are too long and were cut");
    if (strayFailures == 0) return;
    const std::string text =
        Counted(strayFailures, "failure belongs", "failures belong") + " to no conversation\n";
    std::fputs(("velsock-trace: " + text).c_str(), stderr);
}

}  // namespace VelSockTrace

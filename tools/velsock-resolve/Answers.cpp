#include "Answers.h"

#include <VelCompanion/ErrorCatalogue.h>

#include <chrono>
#include <new>

#include "Events.h"
#include "Json.h"
#include "LineReader.h"
#include "StandardStreams.h"
#include "Text.h"

namespace VelSockResolve {

namespace {

using VelBase::ReturnPtrI;
using VelNet::SocketAddressCache;
using VelSockTools::ExitCode;
using VelSockTools::JsonObject;

using Clock = std::chrono::steady_clock;

ReturnPtrI<SocketAddressCache> CreateCache() {
    ReturnPtrI<SocketAddressCache> cache = VelNet::CreateSocketAddressCache();
    if (!cache) throw std::bad_alloc();
    return cache;
}

// An empty question is one too, and must not look like none.
std::string Shown(const std::string& operand) {
    return operand.empty() ? "(empty)" : VelSockTools::OneLine(operand);
}

// One run of the program.
class Session {
public:
    explicit Session(const Arguments& arguments)
        : question_(*arguments.question),
          ask_(arguments.IsIpv6() ? question_.askIpv6 : question_.ask),
          isJson_(arguments.json),
          showsQuestion_(arguments.ShowsQuestions()) {
        if (arguments.cache) cache_ = CreateCache();
    }

    void Ask(const std::string& operand) {
        const Clock::time_point begin = Clock::now();
        try {
            const Values values = ask_(cache_.Get(), operand);
            VelSockTools::WriteOutput(isJson_ ? JsonAnswer(operand, values, Clock::now() - begin)
                                              : TextAnswer(operand, values));
        } catch (const VelNet::Exception& exception) {
            if (isJson_) {
                VelSockTools::WriteOutput(JsonFailure(operand, exception, Clock::now() - begin));
            }
            Keep(VelSockTools::Report("velsock-resolve",
                                      {FailureCode(), WhatFailed(operand), exception}));
        }
    }

    ExitCode Outcome() const { return outcome_; }

private:
    using Seconds = std::chrono::duration<double>;

    std::string TextAnswer(const std::string& operand, const Values& values) const {
        std::string lines;
        for (const std::string& value : values) {
            lines += VelSockTools::OneLine(value);
            if (showsQuestion_) lines.append("\t").append(Shown(operand));
            lines += '\n';
        }
        return lines;
    }

    std::string JsonAnswer(const std::string& operand, const Values& values, Seconds time) const {
        JsonObject object = ObjectFor(operand);
        object.Add(question_.key, JsonValue(values));
        return LineOf(object, time);
    }

    std::string JsonFailure(const std::string& operand, const VelNet::Exception& exception,
                            Seconds time) const {
        JsonObject object = ObjectFor(operand);
        object.AddText("error", VelSockTools::TextOf(exception));
        object.AddNumber("code", exception.GetErrorCode());
        object.AddText("symbol", VelCompanion::SymbolOf(exception.GetErrorCode()));
        return LineOf(object, time);
    }

    static std::string LineOf(JsonObject& object, Seconds time) {
        object.AddDecimal("seconds", time.count());
        return object.Line();
    }

    JsonObject ObjectFor(const std::string& operand) const {
        JsonObject object;
        if (question_.takesOperands) object.AddText("query", operand);
        return object;
    }

    std::string JsonValue(const Values& values) const {
        if (question_.shape == Shape::Texts) return VelSockTools::JsonTexts(values);
        return question_.shape == Shape::Text ? VelSockTools::JsonText(values.front())
                                              : values.front();
    }

    std::string WhatFailed(const std::string& operand) const {
        if (!question_.takesOperands) return std::string("no answer to ") + question_.name;
        return "cannot resolve " + (operand.empty() ? "the empty question" : operand);
    }

    // Questions without operands ask for the host's own settings.
    ExitCode FailureCode() const {
        return question_.takesOperands ? ExitCode::NameNotResolvable : ExitCode::NotConfigured;
    }

    void Keep(ExitCode code) {
        if (outcome_ == ExitCode::InOrder) outcome_ = code;
    }

    const Question& question_;
    VelSockResolve::Ask ask_;
    bool isJson_;
    bool showsQuestion_;
    ReturnPtrI<SocketAddressCache> cache_;
    ExitCode outcome_ = ExitCode::InOrder;
};

void AskInput(Session& session) {
    LineReader reader;
    while (const auto line = reader.Next())
        session.Ask(*line);
}

}  // namespace

ExitCode AskAndAnswer(const Arguments& arguments) {
    Session session(arguments);
    if (!arguments.question->takesOperands) {
        session.Ask("");
    } else if (arguments.operands.empty()) {
        AskInput(session);
    } else {
        for (const std::string& operand : arguments.operands)
            session.Ask(operand);
    }
    return session.Outcome();
}

}  // namespace VelSockResolve

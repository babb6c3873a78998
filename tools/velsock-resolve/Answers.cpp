#include "Answers.h"

#include <new>

#include "Json.h"
#include "LineReader.h"
#include "StandardStreams.h"
#include "Text.h"

namespace VelSockResolve {

namespace {

using VelBase::ReturnPtrI;
using VelNet::SocketAddressCache;
using VelSockTools::ExitCode;

ReturnPtrI<SocketAddressCache> CreateCache() {
    ReturnPtrI<SocketAddressCache> cache = VelNet::CreateSocketAddressCache();
    if (!cache) throw std::bad_alloc();
    return cache;
}

// One run of the program.
class Session {
public:
    explicit Session(const Arguments& arguments)
        : question_(*arguments.question),
          ask_(arguments.IsIpv6() ? question_.askIpv6 : question_.ask),
          isJson_(arguments.json) {
        if (arguments.cache) cache_ = CreateCache();
    }

    void Ask(const std::string& operand) {
        try {
            const Values values = ask_(cache_.Get(), operand);
            VelSockTools::WriteOutput(isJson_ ? JsonAnswer(operand, values) : TextAnswer(values));
        } catch (const VelNet::Exception& exception) {
            if (isJson_) VelSockTools::WriteOutput(JsonFailure(operand, exception));
            Keep(VelSockTools::Report("velsock-resolve",
                                      {FailureCode(), WhatFailed(operand), exception}));
        }
    }

    ExitCode Outcome() const { return outcome_; }

private:
    static std::string TextAnswer(const Values& values) {
        std::string lines;
        for (const std::string& value : values)
            lines += VelSockTools::OneLine(value) + "\n";
        return lines;
    }

    std::string JsonAnswer(const std::string& operand, const Values& values) const {
        JsonObject object = ObjectFor(operand);
        object.Add(question_.key, JsonValue(values));
        return object.Line();
    }

    std::string JsonFailure(const std::string& operand, const VelNet::Exception& exception) const {
        JsonObject object = ObjectFor(operand);
        object.Add("error", JsonText(VelSockTools::TextOf(exception)));
        object.Add("code", std::to_string(exception.GetErrorCode()));
        return object.Line();
    }

    JsonObject ObjectFor(const std::string& operand) const {
        JsonObject object;
        if (question_.takesOperands) object.Add("query", JsonText(operand));
        return object;
    }

    std::string JsonValue(const Values& values) const {
        if (question_.shape == Shape::Texts) return JsonTexts(values);
        return question_.shape == Shape::Text ? JsonText(values.front()) : values.front();
    }

    std::string WhatFailed(const std::string& operand) const {
        return question_.takesOperands ? "cannot resolve " + operand
                                       : std::string("no answer to ") + question_.name;
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

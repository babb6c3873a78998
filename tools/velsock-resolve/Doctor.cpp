#include "Doctor.h"

#include "Findings.h"
#include "Json.h"
#include "StandardStreams.h"
#include "Text.h"

namespace VelSockResolve {

namespace {

std::string TextOf(const Finding& finding) {
    std::string text = finding.works ? "ok     " : "FAILS  ";
    text.append(finding.topic).append(": ");
    text.append(VelSockTools::OneLine(VelSockTools::ValidUtf8(finding.text))).append("\n");
    if (!finding.remedy.empty())
        text.append("       To mend it: ").append(finding.remedy).append("\n");
    return text;
}

std::string JsonOf(const Finding& finding) {
    VelSockTools::JsonObject object;
    object.AddText("topic", finding.topic);
    object.Add("works", finding.works ? "true" : "false");
    object.AddText("text", finding.text);
    object.AddText("remedy", finding.remedy);
    return object.Line();
}

}  // namespace

VelSockTools::ExitCode Examine(bool inJson) {
    bool allWorks = true;
    for (const auto& examine : {ExamineNames, ExamineSettings, ExamineRoutes}) {
        for (const Finding& finding : examine()) {
            VelSockTools::WriteOutput(inJson ? JsonOf(finding) : TextOf(finding));
            allWorks = allWorks && finding.works;
        }
    }
    return allWorks ? VelSockTools::ExitCode::InOrder : VelSockTools::ExitCode::NotConfigured;
}

}  // namespace VelSockResolve

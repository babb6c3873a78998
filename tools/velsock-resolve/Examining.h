// How something is tried out.
#pragma once

#include <VelNet/Exception.h>

#include <string>

#include "ErrorCauses.h"
#include "Failure.h"
#include "Findings.h"

namespace VelSockResolve {

// The remedies are those that the document of errors has.
inline Finding FailureOf(const std::string& topic, const VelNet::Exception& exception) {
    const VelSockTools::ErrorCause* const cause = VelSockTools::FindCause(exception.GetErrorCode());
    return {topic, false, VelSockTools::ReasonOf(exception), cause == nullptr ? "" : cause->remedy};
}

// Returns what the trial finds, or its failure; with the remedy if one is given.
template <class Trial>
Finding Try(const std::string& topic, const Trial& trial, const std::string& remedy = {}) {
    try {
        return {topic, true, trial(), ""};
    } catch (const VelNet::Exception& exception) {
        Finding finding = FailureOf(topic, exception);
        if (!remedy.empty()) finding.remedy = remedy;
        return finding;
    }
}

}  // namespace VelSockResolve

// The questions that can be asked.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketAddressCache.h>

#include <string>
#include <vector>

namespace VelSockResolve {

// The form of an answer in JSON.
enum class Shape { Texts, Text, Number };

using Values = std::vector<std::string>;

// Asks without a cache if it is null. The operand is empty if the question takes none. Throws
// VelNet::Exception.
using Ask = Values (*)(VelNet::SocketAddressCache* cache, const std::string& operand);

struct Question {
    const char* name;  // on the command line
    const char* key;   // of the answer in JSON
    Shape shape;
    bool takesOperands;  // any number, each a question of its own
    bool hasCache;
    Ask ask;
    Ask askIpv6 = nullptr;  // if the question can be asked for either IP version
};

// Returns null for a name that is not a question.
const Question* FindQuestion(const std::string& name);

}  // namespace VelSockResolve

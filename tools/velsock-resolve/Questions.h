// The questions that can be asked.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketAddressCache.h>

#include <string>
#include <vector>

namespace VelSockResolve {

// How an answer looks in JSON.
enum class Shape { Texts, Text, Number };

using Values = std::vector<std::string>;

// A null cache stands for asking anew each time. The operand is empty where none is taken. Throws
// VelNet::Exception.
using Ask = Values (*)(VelNet::SocketAddressCache* cache, const std::string& operand);

struct Question {
    const char* name;  // on the command line
    const char* key;   // of the answer in JSON
    Shape shape;
    bool takesOperands;  // any number of them, each a question
    bool hasCache;
    Ask ask;
};

// Null for a name that is no question.
const Question* FindQuestion(const std::string& name);

}  // namespace VelSockResolve

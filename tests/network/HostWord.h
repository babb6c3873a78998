// Hosts as the scripts write them.
#pragma once

#include <VelNet/SocketXt.h>

#include <string>

namespace Network {

struct SpecialWord {
    const char* word;
    VelNet::SpecialAddressKind kind;
};

inline constexpr SpecialWord SpecialWords[] = {
    {"[any]", VelNet::SPECIAL_ANY},
    {"[loopback]", VelNet::SPECIAL_LOOPBACK},
    {"[this-machine]", VelNet::SPECIAL_THIS_MACHINE},
    {"[broadcast]", VelNet::SPECIAL_BROADCAST},
};

// Calls the operation with the special address or the text that the word stands for.
template <class Operation>
auto WithHost(const std::string& word, Operation operation) {
    for (const SpecialWord& special : SpecialWords) {
        if (word == special.word) return operation(special.kind);
    }
    return operation(word == "-" ? "" : word.c_str());
}

}  // namespace Network

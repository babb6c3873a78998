#include "Operands.h"

#include <algorithm>
#include <cstddef>

#include "Options.h"

namespace VelSockCat {

namespace {

using Words = std::vector<std::string>;

struct Number {
    std::size_t least;
    std::size_t most;
};

Number NumberOf(Operands operands) {
    switch (operands) {
        case Operands::Port:
        case Operands::Error:
            return {1, 1};
        case Operands::HostAndPort:
            return {2, 2};
        case Operands::MaybeHostAndPort:
            return {1, 2};
        case Operands::TwoEnds:
            return {3, 4};
        case Operands::HostAndPorts:
            break;
    }
    return {2, 65536};
}

bool UsesDatagrams(const Arguments& arguments) {
    switch (arguments.command) {
        case Command::UdpSend:
        case Command::UdpListen:
        case Command::Broadcast:
        case Command::Multicast:
            return true;
        default:
            return arguments.usesDatagrams;
    }
}

std::string HostIn(const std::string& word) {
    if (word.empty()) Refuse("the host is empty");
    return word;
}

unsigned short PeerPortIn(const std::string& word, const Arguments& arguments,
                          const CommandRow& row) {
    const unsigned short port = ParsePort(word, UsesDatagrams(arguments));
    if (port == 0) Refuse(std::string(row.name) + " needs a port from 1");
    return port;
}

// "80", "http" or "20-25". The name of a service may have a dash in it.
PortRange RangeIn(const std::string& word, const Arguments& arguments, const CommandRow& row) {
    const std::size_t dash = word.find('-');
    const bool isRange =
        dash != std::string::npos && word.find_first_not_of("0123456789-") == std::string::npos;
    const std::string last = isRange ? word.substr(dash + 1) : word;
    const PortRange range = {
        PeerPortIn(isRange ? word.substr(0, dash) : word, arguments, row),
        PeerPortIn(last, arguments, row),
    };
    if (range.first > range.last) Refuse("'" + word + "' ends before it begins");
    return range;
}

// "20-25,80": what is between commas.
void TakeRanges(Arguments& arguments, const CommandRow& row, const std::string& list) {
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        arguments.ports.push_back(RangeIn(list.substr(begin, end - begin), arguments, row));
        begin = end + 1;
    }
}

void TakeHostAndPorts(Arguments& arguments, const CommandRow& row, const Words& words) {
    arguments.host = HostIn(words.front());
    for (auto word = words.begin() + 1; word != words.end(); ++word)
        TakeRanges(arguments, row, *word);
}

void TakeOwnEnd(Arguments& arguments, const CommandRow& row, const Words& words) {
    if (words.size() == 2) arguments.host = HostIn(words.front());
    arguments.port = row.systemMayChoosePort ? ParsePort(words.back(), UsesDatagrams(arguments))
                                             : PeerPortIn(words.back(), arguments, row);
}

void TakeTwoEnds(Arguments& arguments, const CommandRow& row, const Words& words) {
    TakeOwnEnd(arguments, row, {words.begin(), words.end() - 2});
    arguments.targetHost = HostIn(words[words.size() - 2]);
    arguments.targetPort = PeerPortIn(words.back(), arguments, row);
}

}  // namespace

void TakeOperands(Arguments& arguments, const CommandRow& row, const Words& words) {
    const Number number = NumberOf(row.operands);
    if (words.size() < number.least || words.size() > number.most)
        Refuse(std::string(row.name) + " takes " + row.operandNames);
    switch (row.operands) {
        case Operands::Error:
            arguments.explained = words.front();
            return;
        case Operands::TwoEnds:
            return TakeTwoEnds(arguments, row, words);
        case Operands::HostAndPorts:
            return TakeHostAndPorts(arguments, row, words);
        default:
            return TakeOwnEnd(arguments, row, words);
    }
}

}  // namespace VelSockCat

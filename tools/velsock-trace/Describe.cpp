#include "Describe.h"

#include <VelCompanion/ErrorCatalogue.h>
#include <VelNet/Exception.h>

#include <cinttypes>
#include <cstdio>

#include "Filter.h"

namespace VelSockTrace {

namespace {

VelCompanion::CatalogueEntry EntryOf(int number) noexcept {
    return VelCompanion::EntryOf(VelNet::Exception::GetSocketError(number));
}

}  // namespace

const char* ErrorSymbol(int number) noexcept {
    return EntryOf(number).symbol;
}

std::string ErrorText(int number) {
    const auto entry = EntryOf(number);
    return std::string(entry.text) + " (" + std::to_string(number) + " " + entry.symbol + ")";
}

std::string OutcomeText(const Conversation& conversation) {
    const Outcome outcome = OutcomeOf(conversation);
    if (outcome != Outcome::Failed && outcome != Outcome::NotConnected) return NameOf(outcome);
    return std::string(NameOf(outcome)) + ": " + ErrorText(conversation.loss);
}

std::string SecondsText(std::int64_t microseconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%" PRId64 ".%06" PRId64, microseconds / 1'000'000,
                  microseconds % 1'000'000);
    return text;
}

}  // namespace VelSockTrace

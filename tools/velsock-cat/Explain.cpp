// The command explain: what an error is, what causes it, and what to do.
#include <VelBase/TextConversions.h>
#include <VelCompanion/ErrorCatalogue.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Commands.h"
#include "ErrorCauses.h"
#include "Events.h"
#include "Options.h"
#include "StandardStreams.h"

namespace VelSockCat {

namespace {

using VelCompanion::CatalogueEntry;
using VelCompanion::ErrorCatalogue;

constexpr std::string_view Prefix = "SOCKET_ERR_";

template <class Predicate>
const CatalogueEntry* FindEntry(const Predicate& predicate) {
    const auto* const found = std::find_if(ErrorCatalogue.begin(), ErrorCatalogue.end(), predicate);
    return found == ErrorCatalogue.end() ? nullptr : found;
}

const CatalogueEntry* FindNumber(int number) {
    return FindEntry([&](const CatalogueEntry& each) { return each.code == number; });
}

std::string Uppercase(std::string text) {
    for (char& character : text) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 32);
    }
    return text;
}

// The symbol's common beginning may be left out.
const CatalogueEntry* FindSymbol(const std::string& text) {
    const std::string wanted = Uppercase(text);
    return FindEntry([&](const CatalogueEntry& each) {
        const std::string_view symbol = each.symbol;
        return symbol == wanted || symbol.substr(Prefix.size()) == wanted;
    });
}

std::optional<int> NumberIn(const std::string& text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) return {};
    return number;
}

// In the library's texts the number is one character of that value, a negative one cut to 16 bits.
std::optional<int> NumberOfCharacter(const std::string& text) {
    constexpr int limit = 0x10000;
    constexpr int asciiEnd = 0x80;
    const VelBase::ReturnWString wide = VelBase::UTF8ToWideChar(text.c_str(), false);
    const unsigned short* const units = wide.c_str();
    if (units[0] < asciiEnd || units[1] != 0) return {};
    return units[0] == limit - 1 ? -1 : units[0];
}

const CatalogueEntry& EntryFor(const std::string& text) {
    const CatalogueEntry* entry = FindSymbol(text);
    if (const auto number = NumberIn(text)) entry = FindNumber(*number);
    if (const auto number = NumberOfCharacter(text)) entry = FindNumber(*number);
    if (entry == nullptr) Refuse("'" + text + "' is no number and no symbol of an error");
    return *entry;
}

std::string TextOf(const CatalogueEntry& entry, const VelSockTools::ErrorCause& cause) {
    std::string text = std::to_string(entry.code) + " " + entry.symbol + ": " + entry.text +
                       "\nCause: " + cause.cause + "\n";
    if (*cause.remedy != 0) text += std::string("Remedy: ") + cause.remedy + "\n";
    return text;
}

std::string JsonOf(const CatalogueEntry& entry, const VelSockTools::ErrorCause& cause) {
    VelSockTools::JsonObject object;
    object.AddNumber("code", entry.code);
    object.AddText("symbol", entry.symbol);
    object.AddText("text", entry.text);
    object.AddText("cause", cause.cause);
    object.AddText("remedy", cause.remedy);
    return object.Line();
}

}  // namespace

VelSockTools::ExitCode Explain(const Arguments& arguments) {
    const CatalogueEntry& entry = EntryFor(arguments.explained);
    const VelSockTools::ErrorCause& cause = *VelSockTools::FindCause(entry.code);
    VelSockTools::WriteOutput(VelSockTools::IsToldInJson() ? JsonOf(entry, cause)
                                                           : TextOf(entry, cause));
    return VelSockTools::ExitCode::InOrder;
}

}  // namespace VelSockCat

#include "Json.h"

#include <array>
#include <cstdio>

#include "Text.h"

namespace VelSockTools {

namespace {

std::string Escape(char character) {
    const auto value = static_cast<unsigned char>(character);
    if (character == '"' || character == '\\') return {'\\', character};
    if (value < 0x20 || value == 0x7F) return "\\u00" + HexDigits(value);
    return {character};
}

}  // namespace

std::string JsonText(const std::string& text) {
    std::string json = "\"";
    for (const char character : ValidUtf8(text))
        json += Escape(character);
    return json + "\"";
}

std::string JsonTexts(const std::vector<std::string>& texts) {
    std::string json = "[";
    for (const std::string& text : texts) {
        if (json.size() > 1) json += ',';
        json += JsonText(text);
    }
    return json + "]";
}

void JsonObject::Add(const std::string& key, const std::string& value) {
    if (!members_.empty()) members_ += ',';
    members_.append(JsonText(key)).append(":").append(value);
}

void JsonObject::AddDecimal(const std::string& key, double number) {
    std::array<char, 400> text = {};  // the longest number has 309 digits before the point
    std::snprintf(text.data(), text.size(), "%.6f", number);
    Add(key, text.data());
}

void JsonObject::AddAll(const JsonObject& other) {
    if (!members_.empty() && !other.members_.empty()) members_ += ',';
    members_ += other.members_;
}

std::string JsonObject::Text() const {
    return std::string("{").append(members_).append("}");
}

}  // namespace VelSockTools

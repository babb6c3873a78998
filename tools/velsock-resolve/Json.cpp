#include "Json.h"

#include "Text.h"

namespace VelSockResolve {

namespace {

std::string Escape(char character) {
    const auto value = static_cast<unsigned char>(character);
    if (character == '"' || character == '\\') return {'\\', character};
    if (value < 0x20 || value == 0x7F) return "\\u00" + VelSockTools::HexDigits(value);
    return {character};
}

}  // namespace

std::string JsonText(const std::string& text) {
    std::string json = "\"";
    for (const char character : VelSockTools::ValidUtf8(text))
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

std::string JsonObject::Line() const {
    return std::string("{").append(members_).append("}\n");
}

}  // namespace VelSockResolve

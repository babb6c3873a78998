// The JSON that the tools write.
#pragma once

#include <string>
#include <vector>

namespace VelSockTools {

// Returns the string in quotation marks. What JSON does not allow, or what would control a
// terminal, is escaped; invalid UTF-8 becomes U+FFFD.
std::string JsonText(const std::string& text);

std::string JsonTexts(const std::vector<std::string>& texts);

// An object's members, in the order in which they are added.
class JsonObject {
public:
    // The value is JSON already.
    void Add(const std::string& key, const std::string& value);
    void AddText(const std::string& key, const std::string& text) { Add(key, JsonText(text)); }
    void AddNumber(const std::string& key, long long number) { Add(key, std::to_string(number)); }
    // With six decimals.
    void AddDecimal(const std::string& key, double number);
    void AddAll(const JsonObject& other);

    std::string Text() const;

    // Returns the object as one line.
    std::string Line() const { return Text() + "\n"; }

private:
    std::string members_;
};

}  // namespace VelSockTools

// The JSON that the answers need.
#pragma once

#include <string>
#include <vector>

namespace VelSockResolve {

// Returns the string in quotation marks. What JSON does not allow, or what would control a
// terminal, is escaped; invalid UTF-8 becomes U+FFFD.
std::string JsonText(const std::string& text);

std::string JsonTexts(const std::vector<std::string>& texts);

// An object's members, in the order in which they are added; the values are JSON already.
class JsonObject {
public:
    void Add(const std::string& key, const std::string& value);

    // Returns the object as one line.
    std::string Line() const;

private:
    std::string members_;
};

}  // namespace VelSockResolve

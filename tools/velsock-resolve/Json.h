// The little JSON that the answers need.
#pragma once

#include <string>
#include <vector>

namespace VelSockResolve {

// A text in quotation marks. What must not stand in JSON, or would drive a terminal, is escaped;
// what is no UTF-8 becomes U+FFFD.
std::string JsonText(const std::string& text);

std::string JsonTexts(const std::vector<std::string>& texts);

// An object's members, in the order in which they are added; their values are JSON already.
class JsonObject {
public:
    void Add(const std::string& key, const std::string& value);

    // The object on a line of its own.
    std::string Line() const;

private:
    std::string members_;
};

}  // namespace VelSockResolve

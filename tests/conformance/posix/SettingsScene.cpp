#include "SettingsScene.h"

namespace Conformance {

namespace {

constexpr unsigned int NoCallsError = 4711;

std::vector<unsigned short> Wide(const std::u16string& text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

std::u16string Text(const System::WideUnits& units) {
    return {units.begin(), units.end()};
}

}  // namespace

std::u16string InBrackets(std::u16string text) {
    text.insert(text.begin(), u'[');
    text.push_back(u']');
    return text;
}

Key SettingsKeys::Open(const std::u16string& path, int hive) {
    error_ = NoCallsError;
    return Key(Registry::OpenKey(hive, Wide(path).data(), error_));
}

Key SettingsKeys::OpenBelow(const Key& key, const std::u16string& name) {
    error_ = NoCallsError;
    return Key(Registry::OpenSubKey(*key, Wide(name).data(), error_));
}

bool SettingsKeys::Has(const Key& key, const std::u16string& name) {
    error_ = NoCallsError;
    return Registry::ReadValue(*key, Wide(name).data(), nullptr, error_);
}

std::u16string SettingsKeys::Read(const Key& key, const std::u16string& name) {
    System::WideUnits units;
    error_ = NoCallsError;
    if (!Registry::ReadValue(*key, Wide(name).data(), &units, error_)) return u"none";
    return InBrackets(Text(units));
}

std::vector<std::u16string> SettingsKeys::SubKeys(const Key& key) {
    std::vector<std::u16string> names;
    error_ = NoCallsError;
    for (const System::WideUnits& name : Registry::SubKeyNames(*key, error_)) {
        names.push_back(Text(name));
    }
    return names;
}

}  // namespace Conformance

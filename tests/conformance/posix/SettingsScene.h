// What the scripts about settings share: keys, and texts as these have them.
#pragma once

#include <Platform/Registry.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "SettingsTree.h"

namespace Conformance {

struct KeyCloser {
    void operator()(Registry::Key* key) const { Registry::CloseKey(key); }
};
using Key = std::unique_ptr<Registry::Key, KeyCloser>;

std::u16string InBrackets(std::u16string text);

// Keys of an empty tree. Each call leaves the error it reports in a member.
class SettingsKeys : public testing::Test {
protected:
    Key Open(const std::u16string& path, int hive = Registry::LocalMachine);
    Key OpenBelow(const Key& key, const std::u16string& name);
    bool Has(const Key& key, const std::u16string& name);
    // The value's text in brackets, or what came in its place.
    std::u16string Read(const Key& key, const std::u16string& name);
    std::vector<std::u16string> SubKeys(const Key& key);

    SettingsTree tree_;
    unsigned int error_ = 0;
};

}  // namespace Conformance

// Keys of a machine whose resolver has the settings that a test writes.
#pragma once

#include "ResolverFiles.h"
#include "SettingsScene.h"

namespace Conformance {

inline const char16_t* const ResolverPath =
    u"System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\Resolver";

class ResolverKeys : public SettingsKeys {
protected:
    // Domain and name servers, as a machine with such settings has them.
    std::u16string Told(const std::string& settings) {
        files_.Write(settings);
        return Told();
    }
    std::u16string Told() {
        const Key key = Open(ResolverPath);
        EXPECT_NE(key, nullptr);
        if (key == nullptr) return u"no key";
        return Read(key, u"Domain") + u" " + Read(key, u"NameServer");
    }

    ResolverFiles files_;
};

}  // namespace Conformance

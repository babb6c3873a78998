#include "Trace.h"

namespace Soak {

namespace {

constexpr std::array Categories = {VelLog::CATEGORY_ERROR, VelLog::CATEGORY_CONNECTION_TRACE,
                                   VelLog::CATEGORY_PACKET_TRACE};

void Switch(const char* category, bool on) {
    Require(VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, on), "a router is known");
}

void SwitchVerbose(bool on) {
    Switch(VelLog::CATEGORY_VERBOSE_PACKET_TRACE, on);
}

}  // namespace

Trace::Trace(const std::filesystem::path& folder)
    : path_(folder / "soak.log"), file_(path_.string().c_str()) {}

Trace::~Trace() {
    VelLog::SetSink(nullptr);
    for (const char* const category : Categories)
        VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, false);
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, VelLog::CATEGORY_VERBOSE_PACKET_TRACE, false);
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

void Trace::Change(Random& random) {
    Switch(Categories[Below(random, Categories.size())], Below(random, 2) == 0);
    const std::size_t sink = Below(random, 4);
    if (sink != 0) SwitchVerbose(false);
    if (sink == 0) VelLog::SetSink(&dropping_);
    if (sink == 0) SwitchVerbose(true);
    if (sink == 1) VelLog::SetSink(&file_);
    if (sink == 2) VelLog::SetSink(nullptr);
}

}  // namespace Soak

#include "VelLog/Router.h"

#include "Platform/System.h"
#include "RouterSwitches.h"
#include "VelLog/LogControl.h"

#include <cstring>
#include <mutex>

namespace VelLog {

namespace {

// The switches that the host has set. In static storage without allocation, so that switching
// cannot fail half way and nothing is left to free when the module is unloaded.
struct Switch {
    static constexpr std::size_t MaximumLength = 63;

    char name[MaximumLength + 1];
    char category[MaximumLength + 1];
    bool enabled;

    bool IsFor(const char* otherName, const char* otherCategory) const noexcept {
        return std::strcmp(name, otherName) == 0 && std::strcmp(category, otherCategory) == 0;
    }
};

constexpr std::size_t MaximumSwitches = 64;

constinit System::Lock g_mutex;  // guards everything below
constinit Switch g_switches[MaximumSwitches] = {};
constinit std::size_t g_switchCount = 0;
constinit bool g_isSinkSet = false;

// A router that the host can switch during its lifetime.
class SwitchedRouter final : public Router {
public:
    SwitchedRouter(const char* name, const char* category) noexcept;
    ~SwitchedRouter() override;

    static void UpdateAll() noexcept;

private:
    void Update() noexcept;

    static constinit SwitchedRouter* s_first;

    SwitchedRouter* previous_ = nullptr;
    SwitchedRouter* next_;
};

constinit SwitchedRouter* SwitchedRouter::s_first = nullptr;

Switch* FindSwitch(const char* name, const char* category) noexcept {
    for (std::size_t index = 0; index < g_switchCount; ++index) {
        if (g_switches[index].IsFor(name, category)) return &g_switches[index];
    }
    return nullptr;
}

SwitchedRouter::SwitchedRouter(const char* name, const char* category) noexcept
    : Router(name, category) {
    const std::lock_guard lock(g_mutex);
    Update();
    next_ = s_first;
    if (next_ != nullptr) next_->previous_ = this;
    s_first = this;
}

SwitchedRouter::~SwitchedRouter() {
    const std::lock_guard lock(g_mutex);
    (previous_ != nullptr ? previous_->next_ : s_first) = next_;
    if (next_ != nullptr) next_->previous_ = previous_;
}

void SwitchedRouter::UpdateAll() noexcept {
    for (SwitchedRouter* router = s_first; router != nullptr; router = router->next_)
        router->Update();
}

// Without a sink no router is on, whatever the host has set: log sites then format nothing that
// nobody would read.
void SwitchedRouter::Update() noexcept {
    const Switch* const known = FindSwitch(Name(), Category());
    SetFlag(g_isSinkSet && known != nullptr && known->enabled);
}

bool CanBeKept(const char* text) noexcept {
    return text != nullptr && std::memchr(text, 0, Switch::MaximumLength + 1) != nullptr;
}

Switch* AddSwitch(const char* name, const char* category) noexcept {
    if (g_switchCount == MaximumSwitches) return nullptr;
    Switch& added = g_switches[g_switchCount++];
    std::strcpy(added.name, name);
    std::strcpy(added.category, category);
    return &added;
}

}  // namespace

bool SetRouterEnabled(const char* router, const char* category, bool enabled) noexcept {
    if (!CanBeKept(router) || !CanBeKept(category)) return false;
    const std::lock_guard lock(g_mutex);
    Switch* kept = FindSwitch(router, category);
    if (kept == nullptr) kept = AddSwitch(router, category);
    if (kept == nullptr) return false;
    kept->enabled = enabled;
    SwitchedRouter::UpdateAll();
    return true;
}

void TellRoutersOfSink(bool isSet) noexcept {
    const std::lock_guard lock(g_mutex);
    g_isSinkSet = isSet;
    SwitchedRouter::UpdateAll();
}

VelBase::ReturnPtrI<Router> CreateRouter(const char* name, const char* category,
                                         VelSynch::EnumOrrinLockStackCategory) {
    return new SwitchedRouter(name, category);
}

}  // namespace VelLog

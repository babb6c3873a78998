// What the scripts of select share.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "Scene.h"

namespace Conformance {

inline constexpr Winsock::TimeValue AtOnce = {0, 0};
inline constexpr Winsock::TimeValue Minute = {60, 0};

Winsock::HandleSet SetOf(std::initializer_list<Winsock::Handle> handles);
std::vector<Winsock::Handle> HandlesIn(const Winsock::HandleSet& set);
std::vector<Winsock::Handle> Handles(std::initializer_list<const OwnedSocket*> sockets);

// What the socket is ready for, a letter for each of the three sets. Waits at most for the time.
std::string ReadyFor(const OwnedSocket& socket, Winsock::TimeValue time = AtOnce,
                     std::string_view wineSituation = {});

bool IsReadable(const OwnedSocket& socket, Winsock::TimeValue time = Minute);

}  // namespace Conformance

// A fuzz target over the scripted platform.
#pragma once

#include <functional>

#include "scripted/RecordingServices.h"
#include "scripted/ScriptedPlatform.h"

namespace Fuzz {

// The last error behind each call of the system that succeeds.
inline constexpr int Disturbance = 4242;

// Brings the socket layer up, with all routers on and an empty transcript, plays the scene, and
// takes the layer down. Ends the process if anything is open or allocated then, or an answer left.
void PlayScene(const std::function<void()>& scene);

}  // namespace Fuzz

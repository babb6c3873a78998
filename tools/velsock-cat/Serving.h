// Serves one connection or, with --keep, each one that comes.
#pragma once

#include "Arguments.h"
#include "Failure.h"
#include "Listener.h"
#include "Traffic.h"

namespace VelSockCat {

// Serves a connection to its end. Throws Failure, and what the library throws.
using Serve = void (*)(Accepted& peer, Traffic& traffic, const Arguments& arguments);

// What two connections may do at the same time.
enum class Crowd { OneByOne, AtOnce };

// Listens and serves. A failure of one of many connections is told and the others go on; returns
// the code of the first. With --keep it ends when nobody connects within the time of
// --accept-timeout. Throws Failure, and what the library throws.
VelSockTools::ExitCode ServeConnections(const Arguments& arguments, Crowd crowd, Serve serve);

}  // namespace VelSockCat

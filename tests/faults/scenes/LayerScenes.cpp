#include <VelNet/SocketInitialization.h>

#include <optional>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

constexpr int LayerIsDown = VelNet::SOCKET_ERR_NOTINITIALISED;

std::string StartUp() {
    std::string text = OutcomeOf(LayerIsDown, [] { Stream(); });
    std::optional<VelNet::SocketInitialization> first(std::in_place);
    {
        VelNet::SocketInitialization second;
        second = *first;
        text += OutcomeOf(LayerIsDown, [] { Stream(); });
    }
    text += OutcomeOf(LayerIsDown, [] { Stream(); });
    first.reset();
    return text + OutcomeOf(LayerIsDown, [] { Stream(); });
}

// The last clean-up closes what is open.
std::string ShutDown() {
    std::optional<VelNet::SocketInitialization> layer(std::in_place);
    const SocketPtr forgotten = Stream();
    layer.reset();
    std::string text = Line(forgotten->IsValid());
    layer.emplace();
    text += OutcomeOf(VelNet::SOCKET_ERR_NOTSOCK, [&] { forgotten->Listen(); });
    return text;
}

std::string WithoutLayer() {
    const XtPtr extended = VelNet::CreateSocketXt(
        VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP, VelNet::SocketXt::FAMILY_IPV4);
    return OutcomeOf(VelNet::SOCKET_ERR_NOTSOCK, [&] { extended->Bind("127.0.0.1", "0"); }) +
           Line(static_cast<int>(VelNet::SocketXt::GetIpVersion()));
}

}  // namespace

std::vector<Scene> LayerScenes() {
    return {{"start-up", StartUp}, {"shut-down", ShutDown}, {"without layer", WithoutLayer}};
}

}  // namespace Faults

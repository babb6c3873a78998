#include "SystemSettings.h"

namespace VelSockTools {

std::string PlaceOfSettings() {
    return "the registry, HKEY_LOCAL_MACHINE";
}

std::vector<std::string> ListSettings() {
    return {};
}

std::string PlaceOfNameServers() {
    return R"(the registry, HKEY_LOCAL_MACHINE\System\CurrentControlSet\Services\Tcpip\Parameters)";
}

}  // namespace VelSockTools

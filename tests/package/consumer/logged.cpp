// Logs a failure as JSON into memory and prints its category.
#include <VelLogging/Configure.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>

int main() {
    const VelLogging::Logging logging = VelLogging::Configure("Network/Error=on,ring;format=json");
    const VelNet::SocketInitialization socketLayer;
    try {
        VelNet::SocketAddress::ConvertDottedStringToOctets("x");
    } catch (...) {
        std::printf("%s", logging.Ring()->Lines().c_str());
    }
}

// Lets whoever runs a program decide what it logs, and where: by a word or an environment variable.
//
//   ConfiguredLog 'Network/*=on,file:/tmp/x.log;format=json'
//   VELSOCK_LOG='Network/Error=on,syslog' ConfiguredLog
#include <VelCompanion/Errors.h>
#include <VelCompanion/Pairs.h>
#include <VelCompanion/Transfers.h>
#include <VelLogging/Configure.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>

namespace {

VelLogging::Logging LoggingAsWanted(int count, char** words) {
    if (count > 1) return VelLogging::Configure(words[1]);
    return VelLogging::ConfigureFromEnvironment("VELSOCK_LOG", "Network/Error=on,stderr");
}

// A connection, five bytes each way, and its end.
void Talk() {
    const VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    VelCompanion::SendAll(*pair.first, "hello");
    VelCompanion::SendAll(*pair.second, VelCompanion::ReceiveExactly(*pair.second, 5));
    std::puts(VelCompanion::ReceiveExactly(*pair.first, 5).c_str());
}

}  // namespace

int main(int count, char** words) try {
    // Lives longer than what is logged.
    const VelLogging::Logging logging = LoggingAsWanted(count, words);
    const VelNet::SocketInitialization socketLayer;
    Talk();
    if (logging.Lost() > 0) std::fprintf(stderr, "%llu records were lost\n", logging.Lost());
} catch (const VelLogging::ConfigurationError& mistake) {
    std::fprintf(stderr, "%s\n", mistake.what());
    return 2;
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

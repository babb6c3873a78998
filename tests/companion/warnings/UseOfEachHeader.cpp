// A client that uses each of the companion's headers. It is compiled with the warnings that clients
// may have.
#include <VelCompanion/Connecting.h>
#include <VelCompanion/ErrorCatalogue.h>
#include <VelCompanion/Errors.h>
#include <VelCompanion/Groups.h>
#include <VelCompanion/Owners.h>
#include <VelCompanion/Pairs.h>
#include <VelCompanion/StopSignal.h>
#include <VelCompanion/Strings.h>
#include <VelCompanion/Transfers.h>
#include <VelCompanion/Values.h>
#include <VelCompanion/Waiting.h>
#include <VelNet/SocketInitialization.h>

#include <iostream>
#include <map>
#include <string>
#include <unordered_set>

int main(int count, char** words) try {
    const VelNet::SocketInitialization layer;
    auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    VelCompanion::ConnectWithin(*socket, words[0], "80", VelCompanion::Milliseconds(1000));
    VelCompanion::SendAll(*socket, "text\n");
    std::string come;
    while (const auto line = VelCompanion::ReceiveLine(*socket, come, 100))
        std::cout << *line << '\n';
    VelCompanion::JoinGroup(*socket, "239.1.2.3");

    VelCompanion::StopSignal signal;
    const VelCompanion::ClosedByStop closed(signal, *socket);
    const auto collection = VelCompanion::MakeCollection();
    signal.AddTo(*collection);
    if (!VelCompanion::Select(*collection, 1)) signal.Stop();

    std::map<VelNet::SocketAddress, std::wstring> names;
    names[VelNet::SocketAddress()] = VelCompanion::ToWString(words[0]);
    const std::unordered_set<VelNet::Octets> octets = {VelNet::Octets(1, 2, 3, 4)};
    std::cout << *octets.begin() << names.begin()->first << VelCompanion::SymbolOf(count);
    return VelCompanion::WaitToReceive(*socket, VelCompanion::Milliseconds(0)) ? 0 : 1;
} catch (const VelNet::Exception& failure) {
    std::cerr << VelCompanion::Describe(failure) << VelCompanion::ErrorCodeOf(failure);
    return VelCompanion::IsTimeout(failure) ? 2 : 3;
}

#include "Socket/SocketXtTexts.h"

#include "VelBase/LibraryConversions.h"
#include "VelBase/SystemQueries.h"

namespace VelNet {

VelBase::ReturnString NarrowComputerName() {
    return VelBase::WideCharToMultiByte(VelBase::GetComputerName().c_str(), false);
}

std::string JoinEndpoint(const std::string& host, const std::string& port) {
    return host + ':' + port;
}

bool TellPeer(const Winsock::AddressStorage& storage, int flags, PeerTexts& texts) {
    constexpr int numeric = Winsock::NumericHost | Winsock::NumericService;
    // Required (XtAccept.AddressIsPutToTheResolverWithTheLengthOfTheStorage): the length is that of
    // the storage, not of the address in it.
    return Winsock::getnameinfo(&storage, sizeof storage, texts.Host(), SocketXt::MAXHOST,
                                texts.Port(), SocketXt::MAXPORT, numeric | flags) == 0;
}

void TextEndpoints::FeedTo(VelResource::MessageFormatter& formatter) const {
    for (const std::string& text : texts_)
        formatter.AddNarrowText(text.c_str());
}

}  // namespace VelNet

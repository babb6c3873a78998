// Resolving a dotted name, for which nobody has to be asked.

#include "Rows.h"

#include <VelNet/SocketAddress.h>
#include <netdb.h>

namespace Bench {
namespace {

constexpr const char* DottedName = "10.1.2.3";

class NameScene {
public:
    static constexpr int Operations = 20;
    static constexpr int Result = 1;

    void Prepare() const noexcept {}
};

class RawName : public NameScene {
public:
    int Do() const {
        const hostent* const host = ::gethostbyname(DottedName);
        return host != nullptr && host->h_addr_list[0][0] == 10 ? 1 : 0;
    }
};

class LibraryName : public NameScene {
public:
    int Do() const {
        const auto addresses = VelNet::SocketAddress::GetOctetsFromMachineName(DottedName);
        return addresses->GetOctets(0).GetOctet1() == 10 ? 1 : 0;
    }
};

}  // namespace

void AddNameRows(Cases& cases) {
    cases.push_back(CaseOf<RawName>("dotted-name", "raw"));
    cases.push_back(CaseOf<LibraryName>("dotted-name", "library"));
}

}  // namespace Bench

// Commands that ask about names, and for the records.
#pragma once

#include "Commands.h"

namespace Network {

// resolve NAME: answers the addresses in their order.
Words Resolve(Host& host, const Words& words);
// reverse ADDRESS: answers the name.
Words Reverse(Host& host, const Words& words);
// local-name, domain, name-servers
Words LocalName(Host& host, const Words& words);
Words Domain(Host& host, const Words& words);
Words NameServers(Host& host, const Words& words);
// records: answers all since the last time, with bars between them.
Words TakeRecords(Host& host, const Words& words);

}  // namespace Network

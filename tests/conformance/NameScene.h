// What the scripts about names share: lists of addresses and how they are told.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Scene.h"

namespace Conformance {

using Texts = std::vector<std::string>;

// The outcome of a name call that answers with an error number: the number is the last error as
// well, 0 for success. Overwrites the last error.
testing::AssertionResult Returns(int expected, int result, std::string_view wineSituation = {});

struct ListFreer {
    void operator()(Winsock::AddressInfo* list) const { Winsock::freeaddrinfo(list); }
};
using List = std::unique_ptr<Winsock::AddressInfo, ListFreer>;

Winsock::AddressInfo Hints(int family, int type = 0, int protocol = 0);

// The result goes to the list; what was there before is given back.
int Resolve(const char* host, const char* service, List& list,
            const Winsock::AddressInfo* hints = nullptr);

// The list of texts that must resolve.
List Resolved(const char* host, const char* service, const Winsock::AddressInfo* hints = nullptr);

// An address as "127.0.0.1 80" or "0:0:0:0:0:0:0:1%0 80", from the bytes in memory.
std::string TextOf(const void* address);

// One text for each entry, checked to be of Winsock's form.
Texts AddressesOf(const List& list);

}  // namespace Conformance

// The private fields of an object, to be compared one by one: no operation tells them all.
#pragma once

#include <tuple>
#include <vector>

namespace SocketTests {

// Explicit instantiation may name private members, so that
//
//   auto PrivateFieldsOf(const SocketImpl& socket);
//   template struct Exposed<SocketImpl, &SocketImpl::handle_, &SocketImpl::state_>;
//
// makes a function that refers to these fields, in this order.
template <class Class, auto... Members>
struct Exposed {
    friend auto PrivateFieldsOf(const Class& object) { return std::tie(object.*Members...); }
    friend auto PrivateFieldsOf(Class& object) { return std::tie(object.*Members...); }
};

template <class... Fields>
std::vector<const void*> AddressesOf(const std::tuple<const Fields&...>& fields) {
    return std::apply([](const Fields&... field) { return std::vector<const void*>{&field...}; },
                      fields);
}

}  // namespace SocketTests

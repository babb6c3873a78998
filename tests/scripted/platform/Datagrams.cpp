// The seam's calls that carry a datagram and its address.
#include <gtest/gtest.h>

#include <algorithm>

#include "Addresses.h"
#include "Call.h"

namespace Winsock {

using Scripted::Answer;
using Scripted::Call;

int sendto(Handle handle, const char* buffer, int length, int flags, const void* address,
           int addressLength) {
    Call call("sendto");
    call.Handle(handle).Quoted(buffer, length).Number(length).Number(flags);
    call.Plain(Scripted::AddressText(address, addressLength)).Number(addressLength).Play();
    return static_cast<int>(call.Finish(length));
}

int recvfrom(Handle handle, char* buffer, int length, int flags, void* address,
             int* addressLength) {
    Call call("recvfrom");
    call.Handle(handle).Pointer(buffer).Number(length).Number(flags);
    if (address == nullptr || addressLength == nullptr)
        call.Plain("null");
    else
        call.Number(*addressLength);
    const Answer& answer = call.Play();
    if (call.IsFailure()) return static_cast<int>(call.Finish());
    if (call.IsUsual()) {
        ADD_FAILURE() << "recvfrom has no answer left";
        return static_cast<int>(call.Fail(10060));
    }
    if (answer.bytes.size() > static_cast<std::size_t>(std::max(length, 0))) {
        ADD_FAILURE() << "recvfrom has no room for " << answer.bytes;
        return static_cast<int>(call.Fail(10040));
    }
    std::copy(answer.bytes.begin(), answer.bytes.end(), buffer);
    if (answer.address) Scripted::ReportAddress(*answer.address, address, addressLength);
    return static_cast<int>(call.Finish());
}

}  // namespace Winsock

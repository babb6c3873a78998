#include "Socket/WinsockScope.h"

#include "Platform/Winsock.h"
#include "VelBase/ExceptionImpl.h"
#include "VelBase/SystemQueries.h"
#include "VelBase/TextConversions.h"
#include "VelBase/WideLiteral.h"
#include "VelBase/WideText.h"

#include <string>

namespace VelNet {

using VelBase::operator""_wide;

namespace {

constexpr unsigned short WinsockVersion = 0x0101;

[[noreturn]] void ThrowNotStarted(const char* function, int result) {
    const std::string what = std::string(function) + " ::WSAStartup failed";
    VelBase::WideText text;
    text.Append(VelBase::UTF8ToWideChar(what.c_str(), true))
        .Append("\n"_wide)
        .Append(VelBase::GetSystemErrorDescription(static_cast<unsigned int>(result)));

    VelBase::Message message;
    message.SetDomainAndID(VelBase::MESSAGE_DOMAIN_UNKNOWN, result);
    message.SetMessage(text.Units());
    throw VelBase::ExceptionImpl<VelBase::Message>(message);
}

}  // namespace

WinsockScope::WinsockScope(const char* function) {
    Winsock::StartupData data;  // nobody reads it
    const int result = Winsock::WSAStartup(WinsockVersion, &data);
    if (result != 0) ThrowNotStarted(function, result);
}

WinsockScope::~WinsockScope() {
    Winsock::WSACleanup();
}

}  // namespace VelNet

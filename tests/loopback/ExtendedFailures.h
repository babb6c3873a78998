// What the extended socket's operations throw. The addresses are empty or "<first> : <second>"; the
// number's text is what the table of errors has for it.
#pragma once

#include <loopback/Failure.h>

#include <string>
#include <string_view>

namespace Loopback {

// Of one operation, described as its call failed.
Failure XtFailure(const std::string& operation, const std::string& description,
                  const std::string& call, const std::string& addresses, int number,
                  std::u16string_view numberText);

Failure BindFailed(const std::string& addresses, const std::string& call, int number,
                   std::u16string_view numberText);
Failure ConnectFailed(const std::string& addresses, const std::string& call, int number,
                      std::u16string_view numberText);
Failure ListenFailed(const std::string& addresses, int number, std::u16string_view numberText);
Failure AcceptFailed(const std::string& addresses, int number, std::u16string_view numberText);
Failure CloseFailed(const std::string& addresses, int number, std::u16string_view numberText);
Failure BroadcastFailed(int number, std::u16string_view numberText);

// As a socket without texts has them, unless it has some.
Failure XtSendFailed(int number, std::u16string_view numberText,
                     const std::string& addresses = ": : :");
Failure XtReceiveFailed(int number, std::u16string_view numberText,
                        const std::string& addresses = ": : :");
Failure XtConnectionClosed(const std::string& localHost, const std::string& localPort);

Failure SendToFailed(const std::string& addresses, const std::string& call, int number,
                     std::u16string_view numberText);
Failure RecvFromFailed(int number, std::u16string_view numberText);

// Names with a part of more than 63 letters can be none: the system asks nobody for this one.
std::string UnresolvableHost();
// The number for it is the resolver's own choice among four.
bool IsResolversNumber(int number);
std::u16string_view ResolversText(int number);

}  // namespace Loopback

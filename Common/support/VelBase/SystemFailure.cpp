#include "VelBase/SystemFailure.h"

#include "VelBase/SystemQueries.h"
#include "VelBase/WideLiteral.h"

namespace VelBase {

Message DescribeSystemFailure(const WideText& whatFailed, unsigned int error) {
    WideText text(whatFailed.Length());
    text.Append(whatFailed.Units(), whatFailed.Length());
    text.Append(": "_wide).Append(GetSystemErrorDescription(error));
    Message message;
    message.SetDomainAndID(MESSAGE_DOMAIN_UNKNOWN, static_cast<int>(error));
    message.SetMessage(text.Units());
    return message;
}

}  // namespace VelBase

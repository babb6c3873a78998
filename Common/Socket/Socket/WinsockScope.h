// Starts Winsock around one operation.
#pragma once

namespace VelNet {

// Starts Winsock 1.1 for the scope, in addition to the start that keeps the layer up.
//
// Required (XtStartUp.OtherOperationsHaveNone): in CreateSocketXt, Bind, Connect, Accept, SendTo
// and RecvFrom of the extended socket, and nowhere else.
//
// Throws VelBase::ExceptionImpl<VelBase::Message> if Winsock does not start, which is not logged;
// there is nothing to clean up then.
class WinsockScope {
public:
    // Takes the name of the operation, for that message.
    explicit WinsockScope(const char* function);
    ~WinsockScope();
    WinsockScope(const WinsockScope&) = delete;
    WinsockScope& operator=(const WinsockScope&) = delete;
};

}  // namespace VelNet

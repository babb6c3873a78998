#include "Socket/LogFormat.h"

#include "VelLog/LogMessage.h"

namespace VelNet {

void WriteRecord(VelLog::Router& router, LogFormat format,
                 VelResource::MessageFormatter& formatter) {
    VelLog::LogMessage(router, format.text, formatter, format.quoted, nullptr, nullptr, 0);
}

}  // namespace VelNet

#include "VelBase/SystemQueries.h"

#include "Platform/System.h"
#include "VelBase/WideText.h"

namespace VelBase {

ReturnWString GetComputerName() {
    return WideText().Append(System::ComputerName()).ToReturnWString();
}

ReturnWString GetSystemErrorDescription(unsigned int error) {
    return WideText().Append(System::ErrorDescription(error)).ToReturnWString();
}

void Sleep(unsigned long milliseconds) {
    System::Sleep(milliseconds);
}

}  // namespace VelBase

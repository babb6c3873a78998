// The few questions that the library asks of the machine.
#pragma once

#include "VelBase/ReturnWString.h"

namespace VelBase {

// The local computer's name.
ReturnWString GetComputerName();

// The operating system's text for one of its error numbers.
ReturnWString GetSystemErrorDescription(unsigned int error);

// Suspends the calling thread.
void Sleep(unsigned long milliseconds);

}  // namespace VelBase

// The few things that the library asks the system for.
#pragma once

#include "VelBase/ReturnWString.h"

namespace VelBase {

// Returns the local host's name.
ReturnWString GetComputerName();

// Returns the system's text for one of its error numbers.
ReturnWString GetSystemErrorDescription(unsigned int error);

// Suspends the calling thread.
void Sleep(unsigned long milliseconds);

}  // namespace VelBase

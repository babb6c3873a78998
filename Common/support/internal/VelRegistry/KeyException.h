// The failure of a registry operation.
#pragma once

#include "VelBase/ExceptionImpl.h"

namespace VelRegistry {

// Thrown by value. The text names the operation, the key and the system's reason; the identifier is
// the system's error number. A handler for VelBase::Message& catches it too.
class KeyException : public VelBase::ExceptionImpl<VelBase::Message> {
public:
    explicit KeyException(const VelBase::Message& message);
    KeyException(const KeyException& other);
    KeyException& operator=(const KeyException& other);
    ~KeyException();
};

}  // namespace VelRegistry

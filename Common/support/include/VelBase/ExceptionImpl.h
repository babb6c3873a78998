// The exception type of the support libraries.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/Message.h"

namespace VelBase {

// A Value that is thrown as an exception; a handler for Value& catches it. The library instantiates
// it for Message only. Each object belongs to one thread at a time. Construction and copying copy
// the Value, and throw what that copy throws (std::bad_alloc).
template <class Value>
class ExceptionImpl : public Value {
public:
    // Copy the value.
    explicit ExceptionImpl(const Value& value);
    ExceptionImpl(const ExceptionImpl& other);
    ExceptionImpl& operator=(const ExceptionImpl& other);
    ~ExceptionImpl();
};

// Instantiated inside the module, so that a throw there and a handler in a client agree on the
// type.
extern template class VELSOCK_EXPORT ExceptionImpl<Message>;

}  // namespace VelBase

// The exception of the support libraries: a value that is thrown.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/Message.h"

namespace VelBase {

// A Value that is thrown by value; a handler for Value& catches it. Only Message is thrown so.
// Belongs to one thread at a time. Making and copying one copies the value and throws what that
// throws (std::bad_alloc).
template <class Value>
class ExceptionImpl : public Value {
public:
    explicit ExceptionImpl(const Value& value);
    ExceptionImpl(const ExceptionImpl& other);
    ExceptionImpl& operator=(const ExceptionImpl& other);
    ~ExceptionImpl();
};

// Made inside the module, so that a throw there and a handler in a client agree on the type.
extern template class VELSOCK_EXPORT ExceptionImpl<Message>;

}  // namespace VelBase

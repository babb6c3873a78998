// The exception of the support libraries: a value that is thrown.
#pragma once

#include <VelBase/Export.h>
#include <VelBase/Message.h>

namespace VelBase {

// A Value that is thrown by value; a handler for Value& catches it. Only Message is thrown so.
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

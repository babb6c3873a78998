#include "VelBase/ExceptionImpl.h"

namespace VelBase {

template <class Value>
ExceptionImpl<Value>::ExceptionImpl(const Value& value) : Value(value) {}

template <class Value>
ExceptionImpl<Value>::ExceptionImpl(const ExceptionImpl& other) = default;

template <class Value>
ExceptionImpl<Value>& ExceptionImpl<Value>::operator=(const ExceptionImpl& other) = default;

template <class Value>
ExceptionImpl<Value>::~ExceptionImpl() = default;

template class ExceptionImpl<Message>;

}  // namespace VelBase

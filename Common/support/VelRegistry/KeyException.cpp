#include "VelRegistry/KeyException.h"

namespace VelRegistry {

KeyException::KeyException(const VelBase::Message& message) : ExceptionImpl(message) {}
KeyException::KeyException(const KeyException& other) = default;
KeyException& KeyException::operator=(const KeyException& other) = default;
KeyException::~KeyException() = default;

}  // namespace VelRegistry

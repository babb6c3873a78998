#include "VelBase/Message.h"

namespace VelBase {

Message::Message() noexcept = default;
Message::Message(const Message& other) = default;
Message& Message::operator=(const Message& other) = default;
Message::~Message() = default;

void Message::SetDomainAndID(unsigned short domain, int id) noexcept {
    domain_ = domain;
    id_ = id;
}

unsigned short Message::GetDomain() const noexcept {
    return domain_;
}

int Message::GetID() const noexcept {
    return id_;
}

void Message::SetMessage(const unsigned short* text) {
    text_ = ReturnWString(text);
}

const unsigned short* Message::GetMessage() const noexcept {
    return text_.c_str();
}

}  // namespace VelBase

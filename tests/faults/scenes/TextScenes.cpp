#include <VelBase/ExceptionImpl.h>
#include <VelBase/TextConversions.h>
#include <VelNet/Exception.h>

#include <utility>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

using VelBase::Message;
using VelBase::ReturnString;
using VelBase::ReturnWString;

constexpr unsigned short Word[] = {'w', 'o', 'r', 'd', 0};

std::string Strings() {
    ReturnString text("text");
    const ReturnString copy(text);
    const ReturnString moved(std::move(text));
    ReturnString assigned;
    assigned = copy;
    ReturnString taken;
    taken = std::move(assigned);
    return Line(taken.c_str()) + Line(moved.c_str());
}

std::string WideStrings() {
    ReturnWString text(Word);
    const ReturnWString copy(text);
    const ReturnWString moved(std::move(text));
    ReturnWString assigned;
    assigned = copy;
    ReturnWString taken;
    taken = std::move(assigned);
    return Line(taken.c_str()[3]) + Line(moved.c_str()[0]);
}

std::string Conversions() {
    const ReturnWString wide = VelBase::UTF8ToWideChar(
        "tr\xC3\xA4"
        "d \xF0\x9F\x8C\xB3",
        false);
    return Line(VelBase::WideCharToUTF8(wide.c_str(), false).c_str());
}

std::string Messages() {
    Message message;
    message.SetDomainAndID(3, 4);
    message.SetMessage(Word);
    Message copy(message);
    copy = message;
    VelBase::ExceptionImpl<Message> exception(copy);
    VelBase::ExceptionImpl<Message> second(exception);
    second = exception;
    return Line(second.GetDomain()) + Line(second.GetID()) + Line(second.GetMessage()[0]);
}

std::string Exceptions() {
    VelNet::Exception exception(Word, VelNet::SOCKET_ERR_INVAL);
    const VelNet::Exception copy(exception);
    exception = copy;
    std::string text = Line(static_cast<int>(exception.GetErrorCode()));
    text += Line(exception.GetMessage()[0]);
    text += Line(static_cast<int>(VelNet::Exception::GetSocketError(10060)));
    return text + Line(VelNet::Exception::GetErrorString(10060)[0]);
}

}  // namespace

std::vector<Scene> TextScenes() {
    return {{"strings", Strings},
            {"wide strings", WideStrings},
            {"conversions", Conversions},
            {"messages", Messages},
            {"exceptions", Exceptions}};
}

}  // namespace Faults

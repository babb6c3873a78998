#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddress.h>
#include <VelSynch/ReferenceCountedImpl.h>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

using VelNet::Octets;

std::string Numbers() {
    Octets octets;
    octets = Octets(192, 0, 2, 1);
    const Octets copy(octets);
    const Octets whole(copy.GetAddress());
    std::string text = Line(whole == octets) + Line(octets.GetAddressString().c_str());
    return text + Line(int{copy.GetOctet1()}) + Line(int{copy.GetOctet2()}) +
           Line(int{copy.GetOctet3()}) + Line(int{copy.GetOctet4()});
}

std::string Lists() {
    const VelBase::ReturnPtrI<VelNet::OctetsCollection> one(VelNet::CreateOctetsCollection());
    const VelBase::ReturnPtrI<VelNet::OctetsCollection> other(VelNet::CreateOctetsCollection());
    one->Add(Octets(1, 2, 3, 4));
    other->Add(Octets(5, 6, 7, 8));
    one->AddCollection(*other);
    return Line(one->GetCount()) + Line(one->GetOctets(1).GetAddressString().c_str());
}

std::string Endpoints() {
    VelNet::SocketAddress address(Octets(192, 0, 2, 1), 80);
    const VelNet::SocketAddress copy(address);
    address = VelNet::SocketAddress();
    return Line(address.GetPort()) + Line(copy.GetPort()) +
           Line(copy.GetOctets().GetAddressString().c_str());
}

class Counted : public VelSynch::ReferenceCountedImpl<int> {};

std::string Counting() {
    Counted* const counted = new Counted;
    counted->AddRef();
    const VelBase::ReturnPtrI<Counted> owner(counted);
    counted->Release();
    const VelBase::ReturnPtrI<Counted> copy(new Counted(*counted));
    *copy = *counted;
    copy->ReferenceCountIsAboutToReachZero();
    return Line(owner->GetReferenceCount()) + Line(copy->GetReferenceCount());
}

}  // namespace

std::vector<Scene> ValueScenes() {
    return {
        {"octets", Numbers}, {"lists", Lists}, {"endpoints", Endpoints}, {"counting", Counting}};
}

}  // namespace Faults

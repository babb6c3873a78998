// A counted object that tells what happens to it.
#pragma once

#include <VelSynch/ReferenceCountedImpl.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Support {

class CountedObject : public VelSynch::ReferenceCountedImpl<int> {
public:
    using Events = std::vector<std::string>;

    explicit CountedObject(Events& events, std::function<void()> atEnd = {})
        : events_(events), atEnd_(std::move(atEnd)) {}

    ~CountedObject() override {
        events_.push_back("end at " + std::to_string(GetReferenceCount()));
        if (atEnd_) atEnd_();
    }

    void AddRef() const override {
        events_.push_back("AddRef");
        ReferenceCountedImpl::AddRef();
    }

    void Release() const override {
        events_.push_back("Release");
        ReferenceCountedImpl::Release();
    }

private:
    Events& events_;
    std::function<void()> atEnd_;
};

}  // namespace Support

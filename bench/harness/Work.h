// What is measured: one row's work as one subject does it.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Bench {

// Some operations of one kind, many times over. Belongs to one thread.
class Work {
public:
    Work() = default;
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    virtual ~Work() = default;

    // Makes the next Run possible; is not measured.
    virtual void Prepare() = 0;

    // Does the operations: all that is measured. Throws std::runtime_error when one of them did not
    // do what it should, and whatever the subject throws.
    virtual void Run() = 0;

    // Takes back what Prepare did to the whole process; is not measured. Not called when Run threw.
    virtual void Restore() = 0;
};

// The cases of a row stand together. The first is what the others are compared with, most often the
// bare system calls.
struct Case {
    std::string row;      // what is done, as the limits name it
    std::string subject;  // who does it: "library", "raw" or another library's name
    int operations;       // how many one Run does
    std::function<std::unique_ptr<Work>()> make;
};

using Cases = std::vector<Case>;

// A scene has one operation and tells how many make a run, and what each returns when it did its
// work:
//
//   static constexpr int Operations, Result;
//   void Prepare();
//   int Do();
//   void Restore();    may be missing
//
// The loop around the operation is the same for all subjects, so that it falls out of a comparison.
template <class Scene>
class SceneWork final : public Work {
public:
    template <class... Arguments>
    explicit SceneWork(Arguments... arguments) : scene_(arguments...) {}

    void Prepare() override { scene_.Prepare(); }

    void Run() override {
        int sum = 0;
        for (int index = 0; index < Scene::Operations; ++index)
            sum += scene_.Do();
        if (sum != Scene::Operations * Scene::Result)
            throw std::runtime_error("an operation did not do its work");
    }

    void Restore() override {
        if constexpr (requires { scene_.Restore(); }) scene_.Restore();
    }

private:
    Scene scene_;
};

// The arguments make the scene.
template <class Scene, class... Arguments>
Case CaseOf(const std::string& row, const std::string& subject, Arguments... arguments) {
    return {row, subject, Scene::Operations,
            [=] { return std::make_unique<SceneWork<Scene>>(arguments...); }};
}

}  // namespace Bench

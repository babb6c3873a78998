// Each kind of thing that a public header can declare. No module exports any of it: the check of
// what clients can link names all of it, or it overlooks a kind.
#pragma once

#include <type_traits>

namespace EveryKind {

class Plain {
public:
    Plain();
    explicit Plain(int number);
    Plain(const Plain& other);
    Plain(Plain&& other) noexcept;
    Plain& operator=(const Plain& other);
    ~Plain();
    int Method() const;
    static int StaticMethod();
    static int staticMember;
};

class Abstract {
public:
    Abstract();
    Abstract(const Abstract& other);
    virtual ~Abstract();
    virtual void Virtual();
    virtual void Pure() = 0;

protected:
    void Protected();
};

template <class T>
class Template {
public:
    Template();
    Template(const Template& other);
    T Method() const;
};
extern template class Template<int>;

extern int variable;
int Function(const char* text);
bool operator==(const Plain& left, const Plain& right);

// What has nothing to link.
class Complete {
public:
    Complete() = default;
    Complete(const Complete&) = delete;
    template <class T, std::enable_if_t<std::is_enum<T>::value, int> = 0>
    Complete(T) = delete;
    ~Complete() = default;
    explicit Complete(int number) : number_(number) {}
    int Number() const { return number_; }
    template <class T>
    T As() const {
        return T(number_);
    }
    static constexpr int Zero = 0;

private:
    int number_ = Zero;
};

template <class T>
struct Wrapped {
    Wrapped(const Wrapped& other) : value(other.value) {}
    T value;
};
inline int ValueOf(Wrapped<int> wrapped) {
    return wrapped.value;
}
constexpr int Constant = 1;
inline constexpr int InlineConstant = 1;

}  // namespace EveryKind

extern "C" int EveryKindOfC();

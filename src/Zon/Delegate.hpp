#pragma once

#include <cstring>
#include <functional>
#include <type_traits>
#include <utility>

namespace Zon {

template <class Signature>
class delegate;

/// A callable that is either a method delegate (an object and one of its member functions) or a
/// lambda delegate (any other callable). Method delegates compare equal when both the object and
/// the member function are the same, which is how a subscriber is found again for removal; they
/// are stored inline and calling one allocates nothing. Lambda delegates never compare equal to
/// anything but themselves, and events refuse them.
template <class R, class... Args>
class delegate<R(Args...)> {
public:
    delegate() = default;

    /// Method delegate on `object` and `method`.
    template <class T, class M>
    delegate(T* object, M method) : object(const_cast<void*>(static_cast<const void*>(object)))
    {
        static_assert(std::is_member_function_pointer_v<M>, "a method delegate needs a member function");
        static_assert(sizeof(M) <= sizeof(MethodStorage), "member function pointer too large");
        std::memset(&methodStorage, 0, sizeof(methodStorage));
        std::memcpy(&methodStorage, &method, sizeof(M));
        invoker = &InvokeMethod<T, M>;
    }

    /// Lambda delegate on any callable.
    template <class F,
              class = std::enable_if_t<!std::is_same_v<std::decay_t<F>, delegate> &&
                                       std::is_invocable_r_v<R, F&, Args...>>>
    delegate(F&& callable) : function(std::forward<F>(callable))
    {
    }

    bool IsLambda() const noexcept { return static_cast<bool>(function); }
    bool IsMethod() const noexcept { return invoker != nullptr; }
    explicit operator bool() const noexcept { return IsLambda() || IsMethod(); }

    R operator()(Args... args) const
    {
        if (invoker != nullptr) {
            return invoker(object, methodStorage, std::forward<Args>(args)...);
        }
        return function(std::forward<Args>(args)...);
    }

    friend bool operator==(const delegate& a, const delegate& b) noexcept
    {
        if (a.IsMethod() && b.IsMethod()) {
            return a.object == b.object && a.invoker == b.invoker &&
                   std::memcmp(&a.methodStorage, &b.methodStorage, sizeof(MethodStorage)) == 0;
        }
        return &a == &b;
    }

private:
    struct Dummy {
        virtual ~Dummy() = default;
        void Method() {}
    };
    // Large enough for a member function pointer of any class, including virtual bases.
    struct alignas(alignof(void (Dummy::*)())) MethodStorage {
        unsigned char bytes[2 * sizeof(void (Dummy::*)())];
    };
    using Invoker = R (*)(void*, const MethodStorage&, Args&&...);

    template <class T, class M>
    static R InvokeMethod(void* object, const MethodStorage& storage, Args&&... args)
    {
        M method;
        std::memcpy(&method, &storage, sizeof(M));
        return (static_cast<T*>(object)->*method)(std::forward<Args>(args)...);
    }

    void* object = nullptr;
    MethodStorage methodStorage{};
    Invoker invoker = nullptr;
    std::function<R(Args...)> function;
};

/// Makes a method delegate: `make_delegate(this, &Program::InitializeConnectors)`.
template <class T, class C, class R, class... A>
delegate<R(A...)> make_delegate(T* object, R (C::*method)(A...))
{
    return delegate<R(A...)>(static_cast<C*>(object), method);
}

template <class T, class C, class R, class... A>
delegate<R(A...)> make_delegate(const T* object, R (C::*method)(A...) const)
{
    return delegate<R(A...)>(static_cast<const C*>(object), method);
}

} // namespace Zon

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Zon/Event.hpp"
#include "support/ResourceCounter.hpp"

namespace {

struct Recorder {
    std::vector<std::string>* calls;
    std::string name;
    bool throws = false;
    void OnEvent(int value)
    {
        calls->push_back(name + ":" + std::to_string(value));
        if (throws) {
            throw std::runtime_error("subscriber failed");
        }
    }
    void Other(int) {}
};

} // namespace

TEST(Event, CallsMostRecentlyAddedFirst)
{
    std::vector<std::string> calls;
    Recorder a{&calls, "a"};
    Recorder b{&calls, "b"};
    Recorder c{&calls, "c"};
    Zon::event<int> changed;
    changed += Zon::make_delegate(&a, &Recorder::OnEvent);
    changed += Zon::make_delegate(&b, &Recorder::OnEvent);
    changed += Zon::make_delegate(&c, &Recorder::OnEvent);
    changed(7);
    EXPECT_EQ(calls, (std::vector<std::string>{"c:7", "b:7", "a:7"}));
}

TEST(Event, AnExceptionLeavesTheRaiseAndSkipsTheRest)
{
    std::vector<std::string> calls;
    Recorder a{&calls, "a"};
    Recorder b{&calls, "b", true};
    Zon::event<int> changed;
    changed += Zon::make_delegate(&a, &Recorder::OnEvent);
    changed += Zon::make_delegate(&b, &Recorder::OnEvent);
    EXPECT_THROW(changed(1), std::runtime_error);
    EXPECT_EQ(calls, (std::vector<std::string>{"b:1"}));
}

TEST(Event, RefusesLambdaDelegates)
{
    Zon::event<int> changed;
    try {
        changed += Zon::delegate<void(int)>([](int) {});
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(), "Lambda delegates are not supported by events.");
    }
    EXPECT_EQ(changed.GetSubscriberCount(), 0u);
}

TEST(Delegate, MethodDelegatesOfTheSameObjectAndMethodAreEqual)
{
    std::vector<std::string> calls;
    Recorder a{&calls, "a"};
    Recorder b{&calls, "b"};
    EXPECT_EQ(Zon::make_delegate(&a, &Recorder::OnEvent), Zon::make_delegate(&a, &Recorder::OnEvent));
    EXPECT_FALSE(Zon::make_delegate(&a, &Recorder::OnEvent) == Zon::make_delegate(&b, &Recorder::OnEvent));
    EXPECT_FALSE(Zon::make_delegate(&a, &Recorder::OnEvent) == Zon::make_delegate(&a, &Recorder::Other));
    Zon::delegate<void(int)> lambda([](int) {});
    Zon::delegate<void(int)> copy = lambda;
    EXPECT_FALSE(lambda == copy);
    EXPECT_TRUE(lambda.IsLambda());
}

TEST(Event, RemovesByAnEqualDelegate)
{
    std::vector<std::string> calls;
    Recorder a{&calls, "a"};
    Recorder b{&calls, "b"};
    Zon::event<int> changed;
    changed += Zon::make_delegate(&a, &Recorder::OnEvent);
    changed += Zon::make_delegate(&b, &Recorder::OnEvent);
    changed -= Zon::make_delegate(&a, &Recorder::OnEvent);
    changed(2);
    EXPECT_EQ(calls, (std::vector<std::string>{"b:2"}));
    changed -= Zon::make_delegate(&a, &Recorder::OnEvent); // not subscribed any more: no effect
    EXPECT_EQ(changed.GetSubscriberCount(), 1u);
}

TEST(Event, RaisingAllocatesNothingAndTakesNoLock)
{
    std::vector<std::string> calls;
    struct Counter {
        int total = 0;
        void Add(int value) { total += value; }
    } first, second;
    Zon::event<int> changed;
    changed += Zon::make_delegate(&first, &Counter::Add);
    changed += Zon::make_delegate(&second, &Counter::Add);
    VarnixTest::ResourceCounter counter;
    for (int i = 0; i < 1000; ++i) {
        changed(1);
    }
    EXPECT_EQ(counter.Allocations(), 0u);
    EXPECT_EQ(counter.Locks(), 0u);
    EXPECT_EQ(first.total, 1000);
    EXPECT_EQ(second.total, 1000);
}

TEST(Event, VirtualMethodsDispatchToTheOverride)
{
    struct Base {
        virtual ~Base() = default;
        virtual void On(int& value) { value = 1; }
    };
    struct Derived : Base {
        void On(int& value) override { value = 2; }
    };
    Derived derived;
    Zon::event<int&> changed;
    changed += Zon::make_delegate(static_cast<Base*>(&derived), &Base::On);
    int value = 0;
    changed(value);
    EXPECT_EQ(value, 2);
}

#pragma once

#include <cstddef>
#include <vector>

#include "Zon/Delegate.hpp"
#include "Zon/Exception.hpp"

namespace Zon {

/// An event with method-delegate subscribers.
/// - Subscribing (`+=`) adds the delegate at the front of the list.
/// - Raising (`operator()`) calls every subscriber synchronously on the caller's thread, most
///   recently added first. An exception from a subscriber leaves the raise and the remaining
///   subscribers are not called.
/// - Removing (`-=`) takes out the first subscriber equal to the given delegate.
/// - Lambda delegates are refused with "Lambda delegates are not supported by events."
/// Raising allocates nothing. Subscribers must not subscribe or unsubscribe during a raise of the
/// same event.
template <class... Args>
class event {
public:
    using delegate_type = delegate<void(Args...)>;

    event() = default;
    event(const event&) = delete;
    event& operator=(const event&) = delete;

    event& operator+=(const delegate_type& subscriber)
    {
        if (!subscriber.IsMethod()) {
            throw Exception("Lambda delegates are not supported by events.");
        }
        // Stored in reverse: the newest subscriber is at the back, and a raise walks backwards.
        subscribers.push_back(subscriber);
        return *this;
    }

    event& operator-=(const delegate_type& subscriber)
    {
        for (std::size_t i = subscribers.size(); i-- > 0;) {
            if (subscribers[i] == subscriber) {
                subscribers.erase(subscribers.begin() + static_cast<std::ptrdiff_t>(i));
                break;
            }
        }
        return *this;
    }

    void operator()(Args... args) const
    {
        for (std::size_t i = subscribers.size(); i-- > 0;) {
            subscribers[i](args...);
        }
    }

    std::size_t GetSubscriberCount() const noexcept { return subscribers.size(); }
    bool IsEmpty() const noexcept { return subscribers.empty(); }

private:
    std::vector<delegate_type> subscribers;
};

} // namespace Zon

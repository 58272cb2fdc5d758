// EventSubscription.h: the handle that keeps a callback subscribed to an Event.
//
//   EventSubscription subscription = op.NameChangedEvent().Subscribe([] { Redraw(); });
//   subscription.Reset();  // or let it go out of scope: the callback is no longer called
#pragma once

#include <memory>

namespace Vantel {
namespace Detail {

// The type-erased part of a subscription; the callback itself lives in EventSubscriptionPrivate<Args...>.
class EventSubscriptionPrivateBase {
public:
    virtual ~EventSubscriptionPrivateBase() = default;
};

}  // namespace Detail

// EventSubscription
//
// A move-only handle. As long as it lives, its callback stays subscribed; destroying or resetting it
// unsubscribes. The event holds the callback only weakly, so the sender never extends a listener's life. Hand
// it to Object::AttachSubscription to tie the callback's life to an object's.
class EventSubscription {
public:
    EventSubscription() = default;
    explicit EventSubscription(std::shared_ptr<Detail::EventSubscriptionPrivateBase> subscription)
        : subscription(std::move(subscription)) {}
    EventSubscription(EventSubscription&&) noexcept = default;
    EventSubscription& operator=(EventSubscription&&) noexcept = default;
    EventSubscription(const EventSubscription&) = delete;
    EventSubscription& operator=(const EventSubscription&) = delete;
    ~EventSubscription() = default;

    // False for a handle made from an empty callback, or one that was reset or moved from.
    bool IsSubscribed() const { return subscription != nullptr; }
    void Reset() { subscription.reset(); }

private:
    std::shared_ptr<Detail::EventSubscriptionPrivateBase> subscription;
};

}  // namespace Vantel

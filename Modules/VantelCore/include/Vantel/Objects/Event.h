// Event.h: the notification mechanism of the model.
//
//   Event<DataInput*> added;
//   EventSubscription subscription = added.Subscribe([](DataInput* input) { Show(input); });
//   added.Fire(input);  // calls every live subscriber in subscription order
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <Vantel/Objects/EventSubscription.h>

namespace Vantel {
namespace Detail {

template <typename... Args>
class EventSubscriptionPrivate final : public EventSubscriptionPrivateBase {
public:
    explicit EventSubscriptionPrivate(std::function<void(Args...)> callback)
        : callback(std::move(callback)) {}
    std::function<void(Args...)> callback;
};

}  // namespace Detail

// Event<Args...>
//
// A list of subscribers held weakly: a subscriber lives as long as its EventSubscription handle. Subscribing
// and unsubscribing during a firing do not disturb it (the firing works on a snapshot); a handle destroyed
// during a firing is skipped if its turn has not come, and dropped from the list at the next firing. An event
// costs one null pointer until its first subscription. Main thread only: nothing is locked.
template <typename... Args>
class Event {
public:
    Event() = default;
    Event(Event&&) noexcept = default;
    Event& operator=(Event&&) noexcept = default;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    ~Event() = default;

    // An empty callback adds nothing and gives an empty handle. Subscribing does not change what the event
    // reports, so a const event (such as Object::DestructionEvent) can be subscribed to.
    [[nodiscard]] EventSubscription Subscribe(std::function<void(Args...)> callback) const;

    // Calls every live subscriber with `args`. An event that never had a subscriber does nothing, at the cost
    // of one test where it is fired (most events of a frame have none).
    void Fire(Args... args) const {
        if (block) {
            FireSubscribers(args...);
        }
    }

    bool HasSubscribers() const { return block != nullptr && !block->subscribers.empty(); }

private:
    void FireSubscribers(Args... args) const;

    using Subscriber = Detail::EventSubscriptionPrivate<Args...>;
    struct Block {
        // Shared so that a firing that outlives the event (a callback destroyed its owner) can still write
        // it.
        std::shared_ptr<bool> cleanupNeeded = std::make_shared<bool>(false);
        std::vector<std::weak_ptr<Subscriber>> subscribers;
    };
    mutable std::unique_ptr<Block> block;
};

// ---- Implementation details follow ----

template <typename... Args>
EventSubscription Event<Args...>::Subscribe(std::function<void(Args...)> callback) const {
    if (!callback) {
        return EventSubscription();
    }
    if (!block) {
        block = std::make_unique<Block>();
    }
    auto subscriber = std::make_shared<Subscriber>(std::move(callback));
    block->subscribers.push_back(subscriber);
    return EventSubscription(std::move(subscriber));
}

template <typename... Args>
void Event<Args...>::FireSubscribers(Args... args) const {
    if (*block->cleanupNeeded) {
        std::erase_if(block->subscribers,
                      [](const std::weak_ptr<Subscriber>& entry) { return entry.expired(); });
        *block->cleanupNeeded = false;
    }
    const std::shared_ptr<bool> cleanupNeeded = block->cleanupNeeded;
    const std::vector<std::weak_ptr<Subscriber>> snapshot = block->subscribers;
    for (const std::weak_ptr<Subscriber>& entry : snapshot) {
        const std::shared_ptr<Subscriber> subscriber = entry.lock();
        if (!subscriber) {
            *cleanupNeeded = true;
            continue;
        }
        subscriber->callback(args...);  // the lock keeps it alive through its own call
    }
}

}  // namespace Vantel

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <Vantel/Objects/Event.h>

namespace Vantel {
namespace {

TEST(Event, FiresLiveSubscribersInOrderWithArguments) {
    Event<int> event;
    event.Fire(0);  // never subscribed: nothing happens
    std::vector<std::string> calls;
    EventSubscription a = event.Subscribe([&](int v) { calls.push_back("a" + std::to_string(v)); });
    EventSubscription empty = event.Subscribe(nullptr);
    EventSubscription b = event.Subscribe([&](int v) { calls.push_back("b" + std::to_string(v)); });
    EXPECT_FALSE(empty.IsSubscribed());
    event.Fire(1);
    a.Reset();
    event.Fire(2);
    EXPECT_EQ(calls, (std::vector<std::string>{"a1", "b1", "b2"}));
}

TEST(Event, SubscriptionDestroyedDuringFiringIsSkipped) {
    Event<> event;
    std::vector<std::string> calls;
    std::optional<EventSubscription> second;
    EventSubscription first = event.Subscribe([&] {
        calls.push_back("first");
        second.reset();  // its turn has not come yet
    });
    second = event.Subscribe([&] { calls.push_back("second"); });
    EventSubscription third = event.Subscribe([&] { calls.push_back("third"); });
    event.Fire();
    event.Fire();
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "third", "first", "third"}));
}

TEST(Event, SubscribingDuringFiringWaitsForTheNextFiring) {
    Event<> event;
    int late = 0;
    std::vector<EventSubscription> added;
    EventSubscription adder = event.Subscribe([&] { added.push_back(event.Subscribe([&] { ++late; })); });
    event.Fire();
    EXPECT_EQ(late, 0);
    event.Fire();
    EXPECT_EQ(late, 1);
}

TEST(Event, FiringSurvivesTheDestructionOfItsEvent) {
    auto event = std::make_unique<Event<>>();
    int calls = 0;
    EventSubscription killer = event->Subscribe([&] {
        ++calls;
        event.reset();
    });
    EventSubscription after = event->Subscribe([&] { ++calls; });
    event->Fire();
    EXPECT_EQ(calls, 2);  // the snapshot keeps the firing going
}

}  // namespace
}  // namespace Vantel

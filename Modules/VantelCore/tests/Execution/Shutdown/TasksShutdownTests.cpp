// Tasks::Shutdown is final for the whole process, so its scenario runs in an executable of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#include <Vantel/Execution/Tasks.h>

#include "Support/Signals.h"

namespace Vantel {
namespace {

using Testing::Gate;
using Testing::Signals;

// Signals when the task holding it is destroyed, whether it ran or not.
struct DropToken {
    ~DropToken() { destroyed->Send(); }
    std::shared_ptr<Signals> destroyed;
};

TEST(TasksShutdown, DropsWhatWaitsFinishesWhatRunsAndRefusesEverythingAfter) {
    const unsigned generalThreads = std::max(std::thread::hardware_concurrency(), 2u) - 1;
    auto mustNotRun = std::make_shared<std::atomic<int>>(0);
    auto started = std::make_shared<Signals>();
    auto finished = std::make_shared<std::atomic<unsigned>>(0);
    // Occupies every thread of a pool until its gate opens.
    const auto occupy = [&](Tasks::Kind kind, unsigned count, std::shared_ptr<Gate> gate) {
        for (unsigned i = 0; i < count; ++i) {
            Tasks::RunInBackground(kind, [=] {
                started->Send();
                gate->Wait();
                // Shutdown is under way by now, so what this posts is dropped.
                Tasks::RunInBackground(Tasks::Kind::General, [mustNotRun] { ++*mustNotRun; });
                Tasks::RunOnMainThread([mustNotRun] { ++*mustNotRun; });
                ++*finished;
            });
        }
    };
    auto generalGate = std::make_shared<Gate>();
    auto secondaryGate = std::make_shared<Gate>();
    occupy(Tasks::Kind::General, generalThreads, generalGate);
    occupy(Tasks::Kind::Secondary, 2, secondaryGate);
    EXPECT_TRUE(started->Await(generalThreads + 2));

    // Queued behind them, and for the main thread: never run.
    auto firstDropped = std::make_shared<Signals>();  // by the main-thread queue and the general pool
    auto secondaryDropped = std::make_shared<Signals>();
    const auto queued = [mustNotRun](std::shared_ptr<Signals> dropped) {
        return [mustNotRun, token = std::make_shared<DropToken>(dropped)] { ++*mustNotRun; };
    };
    Tasks::RunOnMainThread(queued(firstDropped));
    Tasks::RunInBackground(Tasks::Kind::General, queued(firstDropped));
    Tasks::RunInBackground(Tasks::Kind::Secondary, queued(secondaryDropped));

    // Shutdown waits for running tasks, so another thread lets each pool's tasks go once that pool (and,
    // before the first, the main-thread queue) has dropped its queue. Had the secondary pool been stopped
    // first, the first wait would time out; had the general pool's tasks not been waited for, the secondary
    // queue would go before they finished.
    std::jthread releaser([=] {
        EXPECT_TRUE(firstDropped->Await(2));
        generalGate->Open();
        EXPECT_TRUE(secondaryDropped->Await());
        EXPECT_EQ(finished->load(), generalThreads);
        secondaryGate->Open();
    });
    Tasks::Shutdown();
    EXPECT_EQ(finished->load(), generalThreads + 2);

    // Afterwards every call lets go of its task at once, so nothing is left that could run it.
    auto task = std::make_shared<int>(0);
    const std::weak_ptr<int> alive = task;
    Tasks::RunInBackground(Tasks::Kind::General, [task] {});
    Tasks::RunInBackground(Tasks::Kind::Secondary, [task] {});
    Tasks::RunOnMainThread([task] {});
    task.reset();
    EXPECT_TRUE(alive.expired());
    Tasks::Shutdown();
    Tasks::ProcessMainThreadTasks();
    EXPECT_EQ(mustNotRun->load(), 0);
}

}  // namespace
}  // namespace Vantel

// Tasks::Shutdown is final for the process; its scenario has an executable of its own, in Shutdown/.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <Vantel/Execution/Tasks.h>

#include "Support/LogCapture.h"
#include "Support/Signals.h"

namespace Vantel {
namespace {

using Testing::Gate;
using Testing::LogCapture;
using Testing::Signals;
using ThreadIds = std::set<std::thread::id>;
using Strings = std::vector<std::string>;

// Runs `count` tasks on a pool and returns the ids of their threads. With `together` each task waits until
// all have started, so a pool with fewer than `count` threads gives fewer ids.
ThreadIds RunTasks(Tasks::Kind kind, unsigned count, bool together) {
    struct Shared {
        Signals started;
        Gate release;
        std::mutex mutex;
        ThreadIds threads;
    };
    auto shared = std::make_shared<Shared>();
    if (!together) {
        shared->release.Open();
    }
    for (unsigned i = 0; i < count; ++i) {
        Tasks::RunInBackground(kind, [shared] {
            {
                std::lock_guard lock(shared->mutex);
                shared->threads.insert(std::this_thread::get_id());
            }
            shared->started.Send();
            shared->release.Wait();
        });
    }
    EXPECT_TRUE(shared->started.Await(count));
    if (together) {
        shared->release.Open();
    }
    std::lock_guard lock(shared->mutex);
    return shared->threads;
}

TEST(Tasks, EachPoolRunsItsTasksSideBySideOnItsOwnThreads) {
    const unsigned generalCount = std::max(std::thread::hardware_concurrency(), 2u) - 1;
    const ThreadIds general = RunTasks(Tasks::Kind::General, generalCount, true);
    const ThreadIds secondary = RunTasks(Tasks::Kind::Secondary, 2, true);
    EXPECT_EQ(general.size(), generalCount);
    EXPECT_EQ(secondary.size(), 2u);
    // Many more tasks find no other threads; any kind but Secondary means the general pool.
    for (auto [kind, pool] : {std::pair{Tasks::Kind::General, &general},
                              {Tasks::Kind::Secondary, &secondary},
                              {static_cast<Tasks::Kind>(7), &general}}) {
        SCOPED_TRACE(static_cast<int>(kind));
        for (std::thread::id id : RunTasks(kind, 64, false)) {
            EXPECT_TRUE(pool->contains(id));
        }
    }
}

TEST(Tasks, NoTaskIsLostBetweenThreadsPoolsAndTheMainThread) {
    constexpr int kPosters = 4;
    constexpr int kTasksEach = 250;
    auto arrived = std::make_shared<Signals>();
    int mainThreadRuns = 0;
    {
        std::vector<std::jthread> posters;
        for (int poster = 0; poster < kPosters; ++poster) {
            posters.emplace_back([&mainThreadRuns, arrived] {
                for (int i = 0; i < kTasksEach; ++i) {
                    // From this thread to one pool, on to the other pool, and back to the main thread.
                    const auto next = i % 2 == 0 ? Tasks::Kind::Secondary : Tasks::Kind::General;
                    Tasks::RunInBackground(static_cast<Tasks::Kind>(i % 2), [&mainThreadRuns, arrived, next] {
                        Tasks::RunInBackground(next, [&mainThreadRuns, arrived] {
                            Tasks::RunOnMainThread([&mainThreadRuns] { ++mainThreadRuns; });
                            arrived->Send();
                        });
                    });
                }
            });
        }
    }
    EXPECT_TRUE(arrived->Await(kPosters * kTasksEach));
    EXPECT_EQ(mainThreadRuns, 0);
    Tasks::ProcessMainThreadTasks();
    EXPECT_EQ(mainThreadRuns, kPosters * kTasksEach);
}

TEST(Tasks, MainThreadTasksRunInPostingOrderOneBatchPerCallUntilOneThrows) {
    Strings ran;
    Tasks::RunOnMainThread([&ran] {
        ran.push_back("a");
        Tasks::RunOnMainThread([&ran] { ran.push_back("posted by a"); });
    });
    Tasks::RunOnMainThread([&ran] { ran.push_back("b"); });
    auto posted = std::make_shared<Signals>();
    Tasks::RunInBackground(Tasks::Kind::Secondary, [&ran, posted] {
        Tasks::RunOnMainThread([&ran] { ran.push_back("from the background"); });
        posted->Send();
    });
    EXPECT_TRUE(posted->Await());
    Tasks::ProcessMainThreadTasks();
    EXPECT_EQ(ran, (Strings{"a", "b", "from the background"}));
    Tasks::ProcessMainThreadTasks();
    EXPECT_EQ(ran, (Strings{"a", "b", "from the background", "posted by a"}));

    // A throwing task propagates and discards the rest of its batch.
    ran.clear();
    Tasks::RunOnMainThread([&ran] { ran.push_back("before"); });
    Tasks::RunOnMainThread([] { throw std::runtime_error("bad frame"); });
    Tasks::RunOnMainThread([&ran] { ran.push_back("discarded"); });
    EXPECT_THROW(Tasks::ProcessMainThreadTasks(), std::runtime_error);
    Tasks::RunOnMainThread([&ran] { ran.push_back("next batch"); });
    Tasks::RunOnMainThread(nullptr);
    Tasks::RunOnMainThread([&ran] { ran.push_back("discarded too"); });
    EXPECT_THROW(Tasks::ProcessMainThreadTasks(), std::bad_function_call);
    Tasks::ProcessMainThreadTasks();
    EXPECT_EQ(ran, (Strings{"before", "next batch"}));
}

// Thrown by failing tasks. A worker posts its report while it handles the exception, so the exception's
// destruction tells the test that the report is queued.
struct StandardFailure : std::runtime_error {
    StandardFailure(const char* what, std::shared_ptr<Signals> handled)
        : runtime_error(what), handled(handled) {}
    ~StandardFailure() override { handled->Send(); }
    std::shared_ptr<Signals> handled;
};
struct OtherFailure {
    ~OtherFailure() { handled->Send(); }
    std::shared_ptr<Signals> handled;
};

TEST(Tasks, ABackgroundFailureBecomesAWarningOnTheMainThread) {
    LogCapture log;
    auto handled = std::make_shared<Signals>();
    Tasks::RunInBackground(Tasks::Kind::General, [handled] { throw StandardFailure("disk full", handled); });
    EXPECT_TRUE(handled->Await());
    EXPECT_EQ(log.Text(), "");  // nothing is logged on the worker
    Tasks::ProcessMainThreadTasks();
    EXPECT_EQ(log.Text(), "[Warning] A background task failed: disk full\n");

    log.Clear();
    Tasks::RunInBackground(Tasks::Kind::Secondary, [handled] { throw OtherFailure{handled}; });
    EXPECT_TRUE(handled->Await());
    Tasks::ProcessMainThreadTasks();
    EXPECT_EQ(log.Text(), "[Warning] A background task failed.\n");

    // Both pools go on working.
    EXPECT_FALSE(RunTasks(Tasks::Kind::General, 1, false).empty());
    EXPECT_FALSE(RunTasks(Tasks::Kind::Secondary, 1, false).empty());
}

TEST(Tasks, WaitForBackgroundTasksOutlastsChainsAcrossPoolsAndFailures) {
    Tasks::ProcessMainThreadTasks();  // whatever earlier tests left behind
    struct Shared {
        Gate release;
        std::atomic<int> finished{0};
    };
    auto shared = std::make_shared<Shared>();
    // A chain general -> secondary -> general, held at its start until the main thread is (most likely)
    // waiting; the main thread must not return before the chain's last link.
    Tasks::RunInBackground(Tasks::Kind::General, [shared] {
        shared->release.Wait();
        Tasks::RunInBackground(Tasks::Kind::Secondary, [shared] {
            Tasks::RunInBackground(Tasks::Kind::General, [shared] {
                ++shared->finished;
                Tasks::RunOnMainThread([] {});
            });
            throw std::runtime_error("link two");
        });
    });
    std::jthread releaser([shared] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));  // only gives a broken wait time to show
        shared->release.Open();
    });
    Tasks::WaitForBackgroundTasks();
    EXPECT_EQ(shared->finished, 1);

    // The failure report and the chain's result wait for the main thread; both are counted when run.
    LogCapture log;
    EXPECT_EQ(Tasks::ProcessMainThreadTasks(), 2u);
    EXPECT_EQ(log.Text(), "[Warning] A background task failed: link two\n");
    EXPECT_EQ(Tasks::ProcessMainThreadTasks(), 0u);
    Tasks::WaitForBackgroundTasks();  // nothing outstanding: returns at once
}

}  // namespace
}  // namespace Vantel

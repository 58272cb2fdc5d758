#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <stdexcept>
#include <thread>

#include <Vantel/Execution/Tasks.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

TEST(Tasks, WaitForBackgroundTasksOutlastsChainsAcrossPoolsAndFailures) {
    Tasks::ProcessMainThreadTasks();  // whatever earlier tests left behind
    struct Shared {
        std::latch release{1};
        std::atomic<int> finished{0};
    };
    auto shared = std::make_shared<Shared>();
    // A chain general -> secondary -> general, held at its start until the main thread is (most likely)
    // waiting; the main thread must not return before the chain's last link.
    Tasks::RunInBackground(Tasks::Kind::General, [shared] {
        shared->release.wait();
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
        shared->release.count_down();
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

// Signals.h: lets background tasks tell a test that they got somewhere, and a test hold them at a gate,
// without sleeping.
//
//   auto signals = std::make_shared<Signals>();
//   Tasks::RunInBackground(Tasks::Kind::General, [signals] { Work(); signals->Send(); });
//   EXPECT_TRUE(signals->Await());
//
// Both are a mutex and a condition variable, not std::counting_semaphore or std::latch: where the system has
// no futex (Windows builds of libstdc++ 12), those wait on atomics through a table of waiters that can lose a
// wake-up, which hangs a pool thread for good.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Vantel::Testing {

// Counts signals sent from any thread. Tasks capture it through a shared_ptr, so that it outlives them even
// when a check fails early. The timeout, reached only when something is broken, turns a hang into a failure.
class Signals {
public:
    void Send() {
        {
            const std::lock_guard lock(mutex);
            ++count;
        }
        arrived.notify_all();
    }
    bool Await(unsigned wanted = 1) {
        std::unique_lock lock(mutex);
        if (!arrived.wait_for(lock, std::chrono::seconds(30), [&] { return count >= wanted; })) {
            return false;
        }
        count -= wanted;
        return true;
    }

private:
    std::mutex mutex;
    std::condition_variable arrived;
    unsigned count = 0;
};

// Holds whoever waits until it is opened once; open for good afterwards.
class Gate {
public:
    void Open() {
        {
            const std::lock_guard lock(mutex);
            open = true;
        }
        opened.notify_all();
    }
    void Wait() {
        std::unique_lock lock(mutex);
        opened.wait(lock, [this] { return open; });
    }

private:
    std::mutex mutex;
    std::condition_variable opened;
    bool open = false;
};

}  // namespace Vantel::Testing

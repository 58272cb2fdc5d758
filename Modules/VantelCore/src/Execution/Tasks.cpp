#include <Vantel/Execution/Tasks.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <Vantel/Support/Logging.h>

#include "Platform/Threads.h"

namespace Vantel {
namespace {

// Runs a task on a pool thread; a failure becomes a warning on the main thread, where logging is expected.
void RunReportingFailure(const std::function<void()>& task) {
    try {
        task();
    } catch (const std::exception& error) {
        Tasks::RunOnMainThread(
            [message = std::string(error.what())] { LogWarning("A background task failed: " + message); });
    } catch (...) {
        Tasks::RunOnMainThread([] { LogWarning("A background task failed."); });
    }
}

// Counts the tasks queued on or running in either pool, so that a caller can wait for all background work to
// end. A task is counted from its queueing until it returned, after anything it queued itself was counted,
// so the count reaches zero only when no work is left that could queue more.
class OutstandingWork {
public:
    void Add() {
        std::lock_guard lock(mutex);
        ++count;
    }
    void Remove(std::size_t finished) {
        std::lock_guard lock(mutex);
        count -= finished;
        if (count == 0) {
            idle.notify_all();
        }
    }
    void WaitUntilNone() {
        std::unique_lock lock(mutex);
        idle.wait(lock, [this] { return count == 0; });
    }

private:
    std::mutex mutex;
    std::condition_variable idle;
    std::size_t count = 0;
};

class WorkerPool {
public:
    WorkerPool(unsigned threadCount, OutstandingWork& outstanding) : outstanding(outstanding) {
        threads.reserve(threadCount);
        for (unsigned i = 0; i < threadCount; ++i) {
            threads.emplace_back([this](std::stop_token stop) { Work(stop); });
        }
    }
    ~WorkerPool() { Stop(); }
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void Post(std::function<void()> task) {
        {
            std::lock_guard lock(mutex);
            if (stopping) {
                return;  // the task dies with this call, outside the lock: its captures may post again
            }
            outstanding.Add();
            queue.push_back(std::move(task));
        }
        std::lock_guard lock(mutex);
        wakeUp.notify_one();
    }

    // Drops what has not started and waits for what has. Calling it again does nothing.
    void Stop() {
        std::deque<std::function<void()>> dropped;
        {
            std::lock_guard lock(mutex);
            stopping = true;
            dropped.swap(queue);
        }
        outstanding.Remove(dropped.size());
        dropped.clear();
        for (std::jthread& thread : threads) {
            thread.request_stop();
        }
        {
            std::lock_guard lock(mutex);
            wakeUp.notify_all();
        }
        // Joined here, not left to the jthreads' destructors: the general pool's tasks must end before the
        // secondary pool stops, and Shutdown must not return while a thread still runs plug-in code, whoever
        // keeps the instance alive a little longer.
        for (std::jthread& thread : threads) {
            if (thread.joinable()) {
                thread.join();
            }
        }
    }

private:
    void Work(std::stop_token stop) {
        for (;;) {
            std::function<void()> task;
            {
                std::unique_lock lock(mutex);
                wakeUp.wait(lock, stop, [this] { return !queue.empty(); });
                if (stop.stop_requested()) {
                    return;
                }
                task = std::move(queue.front());
                queue.pop_front();
            }
            RunReportingFailure(task);
            task = nullptr;  // its captures die before the task counts as finished
            outstanding.Remove(1);
        }
    }

    OutstandingWork& outstanding;
    std::mutex mutex;
    // The _any variant, because only it can be woken by a stop request.
    std::condition_variable_any wakeUp;
    std::deque<std::function<void()>> queue;
    bool stopping = false;
    // Last, so that everything the workers touch exists before they start.
    std::vector<std::jthread> threads;
};

class MainThreadQueue {
public:
    void Post(std::function<void()> task) {
        std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
    }

    std::vector<std::function<void()>> TakeAll() {
        std::lock_guard lock(mutex);
        return std::exchange(tasks, {});
    }

private:
    std::mutex mutex;
    std::vector<std::function<void()>> tasks;
};

unsigned GeneralThreadCount() {
    // hardware_concurrency() may answer 0 (unknown); below 3 the general pool gets a single thread.
    return std::max(std::thread::hardware_concurrency(), 2u) - 1;
}

class Instance {
public:
    // Member order is start-up order: general pool, secondary pool, main-thread queue. The count of
    // outstanding work comes first, since the pools use it until they are stopped.
    OutstandingWork outstanding;
    WorkerPool general{GeneralThreadCount(), outstanding};
    WorkerPool secondary{2, outstanding};
    MainThreadQueue mainThread;

    WorkerPool& Pool(Tasks::Kind kind) { return kind == Tasks::Kind::Secondary ? secondary : general; }
};

void ShutDown(std::shared_ptr<Instance> instance) {
    if (!instance) {
        return;
    }
    // What waits for the main thread goes first (nothing reaches it once the global let the instance go), so
    // that a running task's owner can see it gone and let that task end.
    instance->mainThread.TakeAll();
    instance->general.Stop();
    instance->secondary.Stop();
}

// A lock that is constant-initialised on every platform (std::mutex is not where threads come from a POSIX
// layer over Win32). It guards a few pointer moves, so a waiter yields rather than sleeps: an atomic wait is
// no better, since without a futex it may lose its wake-up.
class ConstantLock {
public:
    void lock() {
        while (flag.test_and_set(std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }
    void unlock() { flag.clear(std::memory_order_release); }

private:
    std::atomic_flag flag;
};

// The one instance, reached only through GetInstance and Take. Shared ownership so that a caller that got the
// instance just before Shutdown took it can finish its call; the pools are stopped by then, so its task is
// dropped.
class Global {
public:
    // For a host that never called Tasks::Shutdown.
    ~Global() {
        std::shared_ptr<Instance> instance = Take();
        if (!Platform::ThreadsOutliveStatics()) {
            // The pools' threads are gone already, and stopping a pool would wait for them: it is left as is.
            new std::shared_ptr<Instance>(std::move(instance));
            return;
        }
        ShutDown(std::move(instance));
    }

    std::shared_ptr<Instance> GetInstance() {
        std::lock_guard lock(mutex);
        if (!instance && !shutDown) {
            instance = std::make_shared<Instance>();
        }
        return instance;
    }

    std::shared_ptr<Instance> Take() {
        std::lock_guard lock(mutex);
        shutDown = true;
        return std::move(instance);
    }

private:
    ConstantLock mutex;
    std::shared_ptr<Instance> instance;
    bool shutDown = false;
};

// Constant-initialised, so any static initialiser may post tasks.
constinit Global global;

}  // namespace

void Tasks::RunInBackground(Kind kind, std::function<void()> task) {
    if (std::shared_ptr<Instance> instance = global.GetInstance()) {
        instance->Pool(kind).Post(std::move(task));
    }
}

void Tasks::RunOnMainThread(std::function<void()> task) {
    if (std::shared_ptr<Instance> instance = global.GetInstance()) {
        instance->mainThread.Post(std::move(task));
    }
}

std::size_t Tasks::ProcessMainThreadTasks() {
    std::vector<std::function<void()>> batch;
    if (std::shared_ptr<Instance> instance = global.GetInstance()) {
        batch = instance->mainThread.TakeAll();
    }
    for (std::function<void()>& task : batch) {
        task();
    }
    return batch.size();
}

void Tasks::WaitForBackgroundTasks() {
    if (std::shared_ptr<Instance> instance = global.GetInstance()) {
        instance->outstanding.WaitUntilNone();
    }
}

void Tasks::Shutdown() {
    ShutDown(global.Take());
}

}  // namespace Vantel

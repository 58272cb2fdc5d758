// Tasks.h: background worker pools and the queue of work handed back to the main thread.
//
//   Tasks::RunInBackground(Tasks::Kind::General, [path] {
//       Tasks::RunOnMainThread([image = Image::LoadFromFile(path)] { preview.Show(image); });
//   });
//   Tasks::ProcessMainThreadTasks();  // once per frame, on the main thread
#pragma once

#include <cstddef>
#include <functional>

#include <Vantel/Export.h>

namespace Vantel {

// Tasks
//
// Two process-wide pools of background threads and one queue of tasks for the main thread, started together
// on the first call of any member. The general pool has one thread less than the machine has hardware threads
// (at least one); the secondary pool has two, so that work parked there cannot starve the general pool.
// Background tasks must not touch the model: they hand their results over with RunOnMainThread, and the host
// runs those with ProcessMainThreadTasks.
//
// Shutdown is final for the process: afterwards every member drops its task without running it. The host
// calls it before unloading plug-ins, so that no background task runs code that is about to disappear. A host
// that never calls it gets it when the library is unloaded.
class VANTEL_API Tasks {
public:
    // Selects a pool; any value other than Secondary selects the general pool.
    enum class Kind : int {
        General = 0,
        Secondary = 1,
    };

    Tasks() = delete;

    // Queues `task` on the pool of `kind`; the pool's threads take tasks in the order they were queued. A
    // task that throws is reported on the main thread, by the next ProcessMainThreadTasks, as the warning "A
    // background task failed: <what()>" for a std::exception and "A background task failed." for anything
    // else; its pool then goes on with the next task. After Shutdown the task is destroyed without running.
    // Thread-safe, also from inside a background task.
    static void RunInBackground(Kind kind, std::function<void()> task);

    // Queues `task` for the next ProcessMainThreadTasks. After Shutdown the task is destroyed without
    // running. Thread-safe, also from inside a background task.
    static void RunOnMainThread(std::function<void()> task);

    // Runs, in posting order, the tasks queued before this call; tasks they post wait for the next call.
    // Returns how many it ran (0 after Shutdown). An exception from a task (std::bad_function_call for an
    // empty one) propagates to the caller, and the rest of the batch is discarded. Main thread only.
    static std::size_t ProcessMainThreadTasks();

    // Returns once neither pool has a task queued or running, including the tasks that running tasks queue
    // meanwhile; what they post to the main thread is left for ProcessMainThreadTasks. A host calls it before
    // its last frame or its save, so that results still being computed are not lost. Returns at once after
    // Shutdown. Main thread only; never from a background task, which would wait for itself.
    static void WaitForBackgroundTasks();

    // Drops the tasks waiting for the main thread, then stops the general pool and then the secondary one:
    // tasks queued but not started are dropped, running tasks are waited for. Later calls do nothing. Main
    // thread only; never from a background task, whose own thread it would wait for.
    static void Shutdown();
};

}  // namespace Vantel

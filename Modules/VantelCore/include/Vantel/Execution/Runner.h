// Runner.h: runs a graph frame by frame.
//
//   Runner runner(std::make_unique<DisplayClock>());
//   runner.SetGraph(&project.GetRootGraph());
//   while (running) { runner.WaitForTick(); runner.Execute(); Tasks::ProcessMainThreadTasks(); }
#pragma once

#include <memory>

#include <Vantel/Export.h>

namespace Vantel {

class Clock;
class Graph;

// Runner
//
// Each Execute evaluates the graph once with the current time, frame duration and frame number, without
// recording for undo and with structure rebuilds deferred, then clears every change mark in the graph
// (recursing into nested graphs) so that the next frame sees only what changed since. WaitForTick measures
// the real time between calls (the first frame's duration comes from the clock); it never sleeps: pacing is
// the host's. Main thread only.
class VANTEL_API Runner {
public:
    explicit Runner(std::unique_ptr<Clock> clock);
    ~Runner();
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    // The graph is not owned; changing it keeps the time and the frame number.
    void SetGraph(Graph* graph);
    Graph* GetGraph() const;

    void WaitForTick();
    // Advances the frame number by one and the time by the delta time, with or without a graph. After the
    // frame, operators whose structure changed while it ran are rebuilt (unrecorded) and run in the next
    // frame. If the graph throws, the exception propagates and neither the marks nor the counters change.
    void Execute();

    double GetTime() const;
    double GetDeltaTime() const;
    unsigned long long GetFrameNumber() const;
    // How many operators ran in all frames so far: those the graph found outdated, a nested graph counting
    // once besides the operators it ran. Changing the graph keeps counting.
    unsigned long long GetOperatorsRun() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel

// ExecutionContext.h: the time, frame duration and frame number that operators see while a frame runs.
//
//   void Execute(ExecutionContext& context) override {
//       phase += frequency.Value() * context.GetDeltaTime();
//   }
#pragma once

#include <memory>

#include <Vantel/Export.h>
#include <Vantel/Objects/Access.h>

namespace Vantel {

// ExecutionContext
//
// Made by the runner (through Access::CreateExecutionContext), updated for each frame and handed to every
// operator that runs in it. Read-only for operators.
class VANTEL_API ExecutionContext {
public:
    ~ExecutionContext();
    ExecutionContext(const ExecutionContext&) = delete;
    ExecutionContext& operator=(const ExecutionContext&) = delete;

    // Seconds since the first frame: the sum of the durations of the frames before this one.
    double GetTime() const;
    // Seconds, the duration of this frame.
    double GetDeltaTime() const;
    // 0 for the first frame.
    unsigned long long GetFrameNumber() const;
    // How many operators the graphs have run with this context, over all its frames (a nested graph counts
    // once, and so does each operator it runs).
    unsigned long long GetOperatorsRun() const;

private:
    friend class Access;
    ExecutionContext(double time, double deltaTime, unsigned long long frameNumber);
    void Update(double time, double deltaTime, unsigned long long frameNumber);
    void CountOperatorRun();

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

inline std::unique_ptr<ExecutionContext> Access::CreateExecutionContext(double time, double deltaTime,
                                                                        unsigned long long frameNumber) {
    return std::unique_ptr<ExecutionContext>(new ExecutionContext(time, deltaTime, frameNumber));
}

inline void Access::UpdateExecutionContext(ExecutionContext& context, double time, double deltaTime,
                                           unsigned long long frameNumber) {
    context.Update(time, deltaTime, frameNumber);
}

inline void Access::CountOperatorRun(ExecutionContext& context) {
    context.CountOperatorRun();
}

}  // namespace Vantel

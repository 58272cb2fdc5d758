#include <Vantel/Execution/Runner.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphImplementation.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>

namespace Vantel {
namespace {

std::int64_t NowInNanoseconds() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace

Clock::~Clock() = default;

class Runner::Implementation {
public:
    std::unique_ptr<Clock> clock;
    Graph* graph = nullptr;
    unsigned long long frameNumber = 0;
    double time = 0.0;
    double deltaTime = 0.0;
    std::int64_t lastTick = 0;
    bool started = false;
    // One context for every frame, updated before each: a frame allocates nothing of its own.
    std::unique_ptr<ExecutionContext> context = Access::CreateExecutionContext(0.0, 0.0, 0);
    // The operators whose structure changed during the frame, kept for its capacity. Emptied as a frame
    // begins, so that a frame that threw leaves nothing behind for the next.
    std::vector<Operator*> unsettled;

    void RunFrame(Graph& graph);
    void SettleStructures();
};

void Runner::Implementation::RunFrame(Graph& graph) {
    Access::UpdateExecutionContext(*context, time, deltaTime, frameNumber);
    Transaction::SuppressRecording suppressRecording;
    unsettled.clear();
    {
        SuppressUpdateStructure suppressStructure;
        graph.Execute(*context);
        // The root graph's own ports and parameters are marked like any operator's and cleared with them.
        ClearFrameChangeMarks(graph, unsettled);
    }
    SettleStructures();
}

// Rebuilds deferred during the frame, outside it; each rebuilt operator runs again in the next frame, with
// its new ports and parameters.
void Runner::Implementation::SettleStructures() {
    for (Operator* op : unsettled) {
        Access::GetImplementation(*op)->UpdateStructureIfDirty();
        op->MarkDirty();
    }
}

Runner::Runner(std::unique_ptr<Clock> clock) : implementation(std::make_unique<Implementation>()) {
    implementation->clock = std::move(clock);
}

Runner::~Runner() = default;

void Runner::SetGraph(Graph* graph) {
    implementation->graph = graph;
}

Graph* Runner::GetGraph() const {
    return implementation->graph;
}

void Runner::WaitForTick() {
    const std::int64_t now = NowInNanoseconds();
    if (implementation->started) {
        implementation->deltaTime = static_cast<double>(now - implementation->lastTick) / 1e9;
    } else {
        implementation->deltaTime =
            implementation->clock != nullptr ? implementation->clock->GetFirstFrameDuration() : 0.0;
        implementation->started = true;
    }
    implementation->lastTick = now;
}

void Runner::Execute() {
    if (Graph* graph = implementation->graph) {
        implementation->RunFrame(*graph);
    }
    implementation->frameNumber += 1;
    implementation->time += implementation->deltaTime;
}

double Runner::GetTime() const {
    return implementation->time;
}

double Runner::GetDeltaTime() const {
    return implementation->deltaTime;
}

unsigned long long Runner::GetFrameNumber() const {
    return implementation->frameNumber;
}

unsigned long long Runner::GetOperatorsRun() const {
    return implementation->context->GetOperatorsRun();
}

}  // namespace Vantel

// FrameBenchmark.cpp: what one runner frame costs on large graphs, against the same checks over flat arrays.
//
//   build/bench/bin/FrameBenchmark                                     # every case, then the ratios
//   build/bench/bin/FrameBenchmark --benchmark_filter=Close            # closing large graphs
//   build/bench/bin/FrameBenchmark --benchmark_filter='AllRun|BusyBaseline' --benchmark_repetitions=5
//
// A program that has never started a thread counts its shared values' references without atomic
// instructions; a host that has (the editor's server, a task pool) pays for them on every value handed on.
// To measure frames as such a host runs them:
//   VANTEL_BENCHMARK_THREADED=1 build/bench/bin/FrameBenchmark --benchmark_filter='AllRun|BusyBaseline'
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/FloatParameter.h>

#include "BenchmarkOperators.h"

// Every allocation of the program, the library's included, goes through these and is counted.
namespace {
std::atomic<std::uint64_t> allocationCount{0};
}  // namespace

void* operator new(std::size_t size) {
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return ::operator new(size);
}
// g++ sees these malloc and free calls inlined into new and delete expressions and takes them for a mismatch.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace Vantel {
namespace {

using Benchmarks::ProcessOperator;
using Benchmarks::SourceOperator;

class FixedClock : public Clock {
public:
    void Reset() override {}
    double GetFirstFrameDuration() const override { return 1.0 / 60.0; }
};

// Driven: no data connections; the source's Amplitude drives every other operator's Offset through a
// parameter connection, so that each of them runs because a parameter changed.
enum class Shape { Chain, FanOut, Driven };

constexpr int kInputsPerProcess = 1;
constexpr int kParametersPerOperator = 3;

// Operator 0 is the source. In a chain each operator feeds the next; in a fan-out the source feeds all
// others.
struct FrameGraph {
    FrameGraph(Shape shape, int count) : shape(shape), count(count) {
        auto made = std::make_unique<SourceOperator>();
        source = made.get();
        Add(std::move(made), 0);
        std::vector<ProcessOperator*> processes;
        for (int i = 1; i < count; ++i) {
            auto process = std::make_unique<ProcessOperator>();
            processes.push_back(process.get());
            Add(std::move(process), i);
        }
        // Wired from the far end, so that each cycle check finds a producer without feeders.
        for (int i = count - 1; i >= 1; --i) {
            ProcessOperator& process = *processes[i - 1];
            if (shape == Shape::Driven) {
                graph.AddParameterConnection(
                    {&source->amplitude, &process.offset, WholeValueLinks(source->amplitude, process.offset)},
                    false);
                continue;
            }
            DataOutput& from = shape == Shape::FanOut || i == 1 ? source->out : processes[i - 2]->out;
            graph.AddDataConnection({&from, &process.in});
        }
        runner.SetGraph(&graph);
        runner.WaitForTick();
        runner.Execute();  // the first frame runs everything and builds the execution order
    }

    void Add(std::unique_ptr<Operator>&& op, int index) {
        op->SetKey("Op" + std::to_string(index));
        operators.push_back(op.get());
        graph.AddOperator(std::move(op));
    }

    Shape shape;
    int count;
    Graph graph;
    Runner runner{std::make_unique<FixedClock>()};
    SourceOperator* source = nullptr;
    std::vector<Operator*> operators;
};

// One graph at a time: the cases of a shape and size run one after the other and share it.
FrameGraph& GraphFor(Shape shape, int count) {
    static std::unique_ptr<FrameGraph> current;
    if (current == nullptr || current->shape != shape || current->count != count) {
        current.reset();
        current = std::make_unique<FrameGraph>(shape, count);
    }
    return *current;
}

// The process's resident memory in bytes (Linux), or 0 where that cannot be read.
double ResidentBytes() {
    std::FILE* statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr) {
        return 0.0;
    }
    unsigned long long pages = 0;
    unsigned long long resident = 0;
    const bool read = std::fscanf(statm, "%llu %llu", &pages, &resident) == 2;
    std::fclose(statm);
    return read ? static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) : 0.0;
}

// What an operator of the chain costs in resident memory, its ports, parameters, connection and first
// values included. Registered first, so that no freed memory of an earlier graph is reused and hides some.
void MemoryPerOperator(benchmark::State& state, Shape shape, int count) {
    double perOperator = 0.0;
    for (auto _ : state) {
        const double before = ResidentBytes();
        std::optional<FrameGraph> graph(std::in_place, shape, count);
        perOperator = (ResidentBytes() - before) / count;
        benchmark::DoNotOptimize(&*graph);
    }
    state.counters["bytes/op"] = perOperator;
}

void ReportCounters(benchmark::State& state, int count, std::uint64_t allocations) {
    state.counters["allocs/frame"] =
        static_cast<double>(allocations) /
        static_cast<double>(std::max<benchmark::IterationCount>(state.iterations(), 1));
    state.counters["per_op"] =
        benchmark::Counter(static_cast<double>(count),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Times `change` followed by one runner frame; `change` is part of the measured frame.
template <typename Change>
void RunFrames(benchmark::State& state, Shape shape, int count, Change&& change) {
    FrameGraph& frameGraph = GraphFor(shape, count);
    frameGraph.runner.Execute();  // start from a settled graph
    const std::uint64_t before = allocationCount.load(std::memory_order_relaxed);
    for (auto _ : state) {
        change(frameGraph);
        frameGraph.runner.Execute();
    }
    ReportCounters(state, count, allocationCount.load(std::memory_order_relaxed) - before);
}

void Idle(benchmark::State& state, Shape shape, int count) {
    RunFrames(state, shape, count, [](FrameGraph&) {});
}

// Every operator downstream of the source runs, which in both shapes is every operator.
void OneSourceChanged(benchmark::State& state, Shape shape, int count) {
    double phase = 0.0;
    RunFrames(state, shape, count, [&phase](FrameGraph& g) { g.source->phase.SetValue(phase += 1.0); });
}

// The source's Amplitude changes, and through its connections every other operator's Offset.
void OneParameterChanged(benchmark::State& state, Shape shape, int count) {
    double amplitude = 1.0;
    RunFrames(state, shape, count,
              [&amplitude](FrameGraph& g) { g.source->amplitude.SetValue(amplitude += 1.0); });
}

// Marking costs a store per operator and is timed with the frame.
void AllRun(benchmark::State& state, Shape shape, int count) {
    RunFrames(state, shape, count, [](FrameGraph& g) {
        for (Operator* op : g.operators) {
            op->MarkDirty();
        }
    });
}

// Closing the graph: destroying it with its operators and connections, each iteration on a fresh graph. A
// source that feeds or drives every other operator tells whether letting go of its many connections stays
// linear.
void Close(benchmark::State& state, Shape shape, int count) {
    for (auto _ : state) {
        state.PauseTiming();
        auto graph = std::make_unique<FrameGraph>(shape, count);
        state.ResumeTiming();
        graph.reset();
    }
    ReportCounters(state, count, 0);
    state.counters.erase("allocs/frame");
}

// The baseline: the idle frame's work over plain structs in flat arrays, operators in execution order.
struct FlatOperator {
    bool dirty = false;
    std::uint32_t firstInput = 0;
    std::uint32_t inputCount = 0;
    std::uint32_t firstParameter = 0;
    std::uint32_t parameterCount = 0;
    std::uint32_t firstOutput = 0;
    std::uint32_t outputCount = 0;
};
struct FlatInput {
    bool changed = false;
};
struct FlatParameter {
    bool changed = false;
    bool marksOutdated = true;
    std::uint32_t firstTarget = 0;  // into FlatGraph::parameterTargets
    std::uint32_t targetCount = 0;
};
struct FlatOutput {
    bool changed = false;
    std::uint32_t firstConnection = 0;  // into FlatGraph::connections
    std::uint32_t connectionCount = 0;
};
struct FlatGraph {
    std::vector<FlatOperator> operators;
    std::vector<FlatInput> inputs;
    std::vector<FlatParameter> parameters;
    std::vector<FlatOutput> outputs;
    std::vector<std::uint32_t> connections;       // the input each data connection goes to
    std::vector<std::uint32_t> parameterTargets;  // the parameter each parameter connection goes to
};

FlatGraph MakeFlatGraph(Shape shape, int count) {
    FlatGraph g;
    const auto n = static_cast<std::uint32_t>(count);
    for (std::uint32_t i = 0; i < n; ++i) {
        const std::uint32_t inputs = i == 0 ? 0 : kInputsPerProcess;
        g.operators.push_back({false, static_cast<std::uint32_t>(g.inputs.size()), inputs,
                               static_cast<std::uint32_t>(g.parameters.size()), kParametersPerOperator, i,
                               1});
        g.inputs.resize(g.inputs.size() + inputs);
        g.parameters.resize(g.parameters.size() + kParametersPerOperator);
        // Input k belongs to operator k + 1.
        const std::uint32_t first = static_cast<std::uint32_t>(g.connections.size());
        if (shape == Shape::Chain && i + 1 < n) {
            g.connections.push_back(i);
        } else if (shape == Shape::FanOut && i == 0) {
            for (std::uint32_t k = 0; k + 1 < n; ++k) {
                g.connections.push_back(k);
            }
        }
        g.outputs.push_back({false, first, static_cast<std::uint32_t>(g.connections.size()) - first});
    }
    return g;
}

int RunFlatFrame(FlatGraph& g) {
    int ran = 0;
    for (FlatOperator& op : g.operators) {
        bool outdated = op.dirty;
        for (std::uint32_t i = op.firstInput; !outdated && i < op.firstInput + op.inputCount; ++i) {
            outdated = g.inputs[i].changed;
        }
        for (std::uint32_t p = op.firstParameter; !outdated && p < op.firstParameter + op.parameterCount;
             ++p) {
            outdated = g.parameters[p].changed && g.parameters[p].marksOutdated;
        }
        ran += outdated ? 1 : 0;
        for (std::uint32_t o = op.firstOutput; o < op.firstOutput + op.outputCount; ++o) {
            const FlatOutput& output = g.outputs[o];
            for (std::uint32_t c = 0; output.changed && c < output.connectionCount; ++c) {
                g.inputs[g.connections[output.firstConnection + c]].changed = true;
            }
        }
        for (std::uint32_t p = op.firstParameter; p < op.firstParameter + op.parameterCount; ++p) {
            const FlatParameter& parameter = g.parameters[p];
            for (std::uint32_t t = 0; parameter.changed && t < parameter.targetCount; ++t) {
                g.parameters[g.parameterTargets[parameter.firstTarget + t]].changed = true;
            }
        }
    }
    for (FlatOperator& op : g.operators) {
        op.dirty = false;
    }
    for (FlatInput& input : g.inputs) {
        input.changed = false;
    }
    for (FlatOutput& output : g.outputs) {
        output.changed = false;
    }
    for (FlatParameter& parameter : g.parameters) {
        parameter.changed = false;
    }
    return ran;
}

void Baseline(benchmark::State& state, Shape shape, int count) {
    FlatGraph g = MakeFlatGraph(shape, count);
    const std::uint64_t before = allocationCount.load(std::memory_order_relaxed);
    for (auto _ : state) {
        benchmark::DoNotOptimize(RunFlatFrame(g));
        benchmark::ClobberMemory();
    }
    ReportCounters(state, count, allocationCount.load(std::memory_order_relaxed) - before);
}

// The busy baseline: the benchmark operators' arithmetic over flat arrays, one virtual call per operator in
// execution order, each value handed on by pointer to the operator that reads it.
struct FlatValueOperator {
    virtual ~FlatValueOperator() = default;
    virtual void Run(double time) = 0;
    double out = 0.0;
};
struct FlatSource final : FlatValueOperator {
    void Run(double time) override { out = amplitude * std::sin(frequency * time + phase); }
    double frequency = 1.0;
    double amplitude = 1.0;
    double phase = 0.0;
};
struct FlatProcess final : FlatValueOperator {
    void Run(double) override { out = std::min(*in * gain + offset, limit); }
    const double* in = nullptr;
    double gain = 1.0;
    double offset = 0.0;
    double limit = 1e6;
};

void BusyBaseline(benchmark::State& state, Shape shape, int count) {
    FlatSource source;
    std::vector<FlatProcess> processes(static_cast<std::size_t>(count - 1));
    std::vector<FlatValueOperator*> order{&source};
    for (std::size_t i = 0; i < processes.size(); ++i) {
        processes[i].in = shape == Shape::FanOut || i == 0 ? &source.out : &processes[i - 1].out;
        order.push_back(&processes[i]);
    }
    double time = 0.0;
    const std::uint64_t before = allocationCount.load(std::memory_order_relaxed);
    for (auto _ : state) {
        time += 1.0 / 60.0;
        for (FlatValueOperator* op : order) {
            op->Run(time);
        }
        benchmark::DoNotOptimize(processes.back().out);
        benchmark::ClobberMemory();
    }
    ReportCounters(state, count, allocationCount.load(std::memory_order_relaxed) - before);
}

// The console table, then each frame's CPU time over its baseline's for each shape and size: the idle frame
// over the flat checks, every operator running over the flat arithmetic.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        // With --benchmark_repetitions the median stands for the case; on a busy machine it is the steadier.
        for (const Run& run : runs) {
            if (run.error_occurred) {
                continue;
            }
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
                cpuTimes[run.run_name.str()] = run.GetAdjustedCPUTime();
                medians.insert(run.run_name.str());
            } else if (run.run_type == Run::RT_Iteration && medians.count(run.run_name.str()) == 0) {
                cpuTimes[run.run_name.str()] = run.GetAdjustedCPUTime();
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        PrintRatios("/Idle/", "/Baseline/");
        PrintRatios("/AllRun/", "/BusyBaseline/");
        ConsoleReporter::Finalize();
    }

private:
    void PrintRatios(const std::string& measured, const std::string& against) {
        for (const auto& [name, time] : cpuTimes) {
            const std::size_t at = name.find(measured);
            if (at == std::string::npos) {
                continue;
            }
            const std::string baselineName = name.substr(0, at) + against + name.substr(at + measured.size());
            const auto baseline = cpuTimes.find(baselineName);
            if (baseline != cpuTimes.end() && baseline->second > 0.0) {
                GetOutputStream() << measured.substr(1, measured.size() - 2) << "/"
                                  << against.substr(1, against.size() - 2) << " " << name << ": "
                                  << time / baseline->second << "\n";
            }
        }
    }

    std::map<std::string, double> cpuTimes;
    std::set<std::string> medians;
};

void RegisterAll() {
    benchmark::RegisterBenchmark("Frame/Chain/MemoryPerOperator/100000", MemoryPerOperator, Shape::Chain,
                                 100000)
        ->Iterations(1)
        ->Repetitions(1)  // a repetition would reuse the memory freed by the one before
        ->Unit(benchmark::kMillisecond);
    using Case = void (*)(benchmark::State&, Shape, int);
    const std::pair<const char*, Case> cases[] = {{"Idle", Idle},
                                                  {"Baseline", Baseline},
                                                  {"OneSourceChanged", OneSourceChanged},
                                                  {"AllRun", AllRun},
                                                  {"BusyBaseline", BusyBaseline}};
    for (const auto& [shapeName, shape] :
         {std::pair{"Chain", Shape::Chain}, std::pair{"FanOut", Shape::FanOut}}) {
        for (int count : {1000, 10000, 100000}) {
            for (const auto& [caseName, run] : cases) {
                const std::string name =
                    std::string("Frame/") + shapeName + "/" + caseName + "/" + std::to_string(count);
                benchmark::RegisterBenchmark(name.c_str(), run, shape, count)->Unit(benchmark::kMicrosecond);
            }
        }
    }
    for (const auto& [shapeName, shape] :
         {std::pair{"Chain", Shape::Chain}, std::pair{"FanOut", Shape::FanOut},
          std::pair{"Driven", Shape::Driven}}) {
        for (int count : {10000, 100000}) {
            const std::string name = std::string("Graph/Close/") + shapeName + "/" + std::to_string(count);
            benchmark::RegisterBenchmark(name.c_str(), Close, shape, count)
                ->Iterations(2)
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (int count : {1000, 10000, 100000}) {
        const std::string name = "Frame/Driven/OneParameterChanged/" + std::to_string(count);
        benchmark::RegisterBenchmark(name.c_str(), OneParameterChanged, Shape::Driven, count)
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace
}  // namespace Vantel

int main(int argc, char** argv) {
    if (const char* threaded = std::getenv("VANTEL_BENCHMARK_THREADED");
        threaded != nullptr && *threaded == '1') {
        std::thread([] {}).join();  // from here on, shared values count their references atomically
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    Vantel::RegisterAll();
    Vantel::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

// ProjectBenchmark.cpp: saving and loading large projects, against the JSON library's own dump and parse of
// the same document, timed in turns within each case so that the ratio comes from one run.
//
//   build/bench/bin/ProjectBenchmark                                   # Save and Load at 1,000 and 10,000
//   the counters: "ratio" is save/dump or load/parse, "baseline_ms" the JSON library's time alone
//
// A 10 MB text either gets fresh pages from the kernel each time or reuses the heap's, as glibc's adaptive
// mmap threshold decides; it can change between repetitions. Fresh pages cost both sides alike and bring the
// ratios towards 1. To compare the work alone, keep the heap's pages:
//   export GLIBC_TUNABLES=glibc.malloc.mmap_threshold=268435456:glibc.malloc.trim_threshold=1073741824
//   build/bench/bin/ProjectBenchmark --benchmark_filter=10000
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>

#include "BenchmarkOperators.h"

namespace Vantel {
namespace {

using Benchmarks::ProcessOperator;
using Benchmarks::SourceOperator;

// Operator 0 is the source; each process takes the previous operator's data, every process after the first
// has its Offset driven by the previous one's Gain, and each stores values of its own.
struct ProjectFile {
    explicit ProjectFile(int count) : count(count) {
        Benchmarks::RegisterBenchmarkTypes();
        Graph& root = *project.GetRootGraph();
        auto source = std::make_unique<SourceOperator>();
        source->SetKey("Op0");
        source->frequency.SetValue(2.5);
        DataOutput* sourceOut = &source->out;
        root.AddOperator(std::move(source));
        std::vector<ProcessOperator*> processes;
        for (int i = 1; i < count; ++i) {
            auto process = std::make_unique<ProcessOperator>();
            process->SetKey("Op" + std::to_string(i));
            process->gain.SetValue(1.0 + i * 0.001);
            process->limit.SetValue(100.0 + i);
            processes.push_back(process.get());
            root.AddOperator(std::move(process));
        }
        // Wired from the far end, so that building the file does not pay for a cycle check down the chain.
        for (std::size_t i = processes.size(); i-- > 0;) {
            ProcessOperator& process = *processes[i];
            root.AddDataConnection({i == 0 ? sourceOut : &processes[i - 1]->out, &process.in});
            if (i > 0) {
                ProcessOperator& previous = *processes[i - 1];
                root.AddParameterConnection(
                    {&previous.gain, &process.offset, WholeValueLinks(previous.gain, process.offset)}, false);
            }
        }
        document = Serialization::SerializeProject(project);
        text = document.dump(4);
    }

    int count;
    Project project;
    nlohmann::json document;
    std::string text;
};

// One project at a time: the cases of a size run one after the other and share it.
ProjectFile& FileFor(int count) {
    static std::unique_ptr<ProjectFile> current;
    if (current == nullptr || current->count != count) {
        current.reset();
        current = std::make_unique<ProjectFile>(count);
    }
    return *current;
}

double Seconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

// What `function` returns, with the seconds it took in `seconds`.
template <typename Function>
auto Timed(Function& function, double& seconds) {
    const auto start = std::chrono::steady_clock::now();
    auto result = function();
    seconds = Seconds(std::chrono::steady_clock::now() - start);
    return result;
}

// Each iteration times `measured` and `baseline`, taking turns at going first; the case's time is
// `measured`, the counters give the baseline's mean and the ratio of the two totals. Destroying results is
// left out of both. The turns matter: whichever goes first right after the last iteration's results were
// freed builds its tree in the scattered blocks they left, and a parse there takes nearly a fifth longer than
// one that follows it. In a fixed order that cost always fell on the load.
template <typename Measured, typename Baseline>
void RunAgainstBaseline(benchmark::State& state, Measured&& measured, Baseline&& baseline) {
    double measuredTotal = 0.0;
    double baselineTotal = 0.0;
    bool measuredFirst = true;
    for (auto _ : state) {
        double measuredSeconds = 0.0;
        double baselineSeconds = 0.0;
        if (measuredFirst) {
            auto result = Timed(measured, measuredSeconds);
            auto baselineResult = Timed(baseline, baselineSeconds);
            benchmark::DoNotOptimize(result);
            benchmark::DoNotOptimize(baselineResult);
        } else {
            auto baselineResult = Timed(baseline, baselineSeconds);
            auto result = Timed(measured, measuredSeconds);
            benchmark::DoNotOptimize(result);
            benchmark::DoNotOptimize(baselineResult);
        }
        measuredFirst = !measuredFirst;
        state.SetIterationTime(measuredSeconds);
        measuredTotal += measuredSeconds;
        baselineTotal += baselineSeconds;
    }
    const double iterations = static_cast<double>(state.iterations() > 0 ? state.iterations() : 1);
    state.counters["baseline_ms"] = baselineTotal * 1000.0 / iterations;
    state.counters["ratio"] = baselineTotal > 0.0 ? measuredTotal / baselineTotal : 0.0;
}

// SerializeProjectText (what Project::Serialize writes), against dump(4) of the same document.
void Save(benchmark::State& state, int count) {
    ProjectFile& file = FileFor(count);
    if (Serialization::SerializeProjectText(file.project) != file.text) {
        state.SkipWithError("the written text differs from the document's dump");
        return;
    }
    RunAgainstBaseline(
        state, [&file] { return Serialization::SerializeProjectText(file.project); },
        [&file] { return file.document.dump(4); });
}

// ReadProjectText and DeserializeProject (what Project::Deserialize does with a file's text), against the
// JSON library's parse of the same text.
void Load(benchmark::State& state, int count) {
    ProjectFile& file = FileFor(count);
    // A load that loses anything would make the figure meaningless: the loaded tree must save as the file.
    const std::unique_ptr<Project> check =
        Deserialization::DeserializeProject(Deserialization::ReadProjectText(file.text));
    if (check == nullptr || Serialization::SerializeProject(*check) != file.document) {
        state.SkipWithError("the loaded project differs from the saved one");
        return;
    }
    // The parsed document is handed out with the project, so that, as in the baseline, destroying it is not
    // timed.
    RunAgainstBaseline(
        state,
        [&file] {
            nlohmann::json document = Deserialization::ReadProjectText(file.text);
            std::unique_ptr<Project> project = Deserialization::DeserializeProject(document);
            return std::make_pair(std::move(document), std::move(project));
        },
        [&file] { return nlohmann::json::parse(file.text); });
}

void RegisterAll() {
    using Case = void (*)(benchmark::State&, int);
    const std::pair<const char*, Case> cases[] = {{"Save", Save}, {"Load", Load}};
    for (int count : {1000, 10000}) {
        for (const auto& [caseName, run] : cases) {
            const std::string name = std::string("Project/") + caseName + "/" + std::to_string(count);
            benchmark::RegisterBenchmark(name.c_str(), run, count)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
}

}  // namespace
}  // namespace Vantel

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    Vantel::RegisterAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

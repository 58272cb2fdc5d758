// EditBenchmark.cpp: the edit session over its real socket. The round trip is a request, the edit on the
// model's thread, and its "changed" update arriving on the event stream, while the project runs live; reading
// is a whole graph's description, parsed by the client.
//
//   build/bench/bin/EditBenchmark        # EditRoundTrip at 1,000 and 10,000 operators, ReadGraph at 10,000
//   the counter "goal_ms" is the time each case should stay under
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <Vantel/Execution/Tasks.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Project.h>

#include "BenchmarkOperators.h"
#include "Edit/EditHost.h"
#include "Edit/LogTee.h"

namespace Vantel {
namespace {

using Benchmarks::ProcessOperator;
using Benchmarks::SourceOperator;
using nlohmann::json;

// A chain of `count` operators served by a live session: its loop on a thread of its own (the model's), and
// a reader of its event stream that counts the "changed" updates.
class LiveSession {
public:
    explicit LiveSession(int count) : log(sink) {
        Benchmarks::RegisterBenchmarkTypes();
        Graph& root = *project.GetRootGraph();
        auto source = std::make_unique<SourceOperator>();
        DataOutput* previous = &source->out;
        root.AddOperator(std::move(source));
        for (int i = 1; i < count; ++i) {
            auto process = std::make_unique<ProcessOperator>();
            ProcessOperator& added = *process;
            root.AddOperator(std::move(process));
            root.AddDataConnection({previous, &added.in});
            previous = &added.out;
            if (i == count / 2) {
                target = added.gain.GetPath().ToString();
            }
        }
        host = std::make_unique<VantelHost::EditHost>(
            project, std::filesystem::temp_directory_path() / "vantel-edit-benchmark.json", 60.0, log);
        port = host->Start(0);
        loop = std::thread([this] { host->Run(stop); });
        reader = std::thread([this] { Read(); });
        WaitForStream();
    }

    ~LiveSession() {
        stop = true;
        loop.join();
        host->Stop();
        reader.join();
    }

    LiveSession(const LiveSession&) = delete;
    LiveSession& operator=(const LiveSession&) = delete;

    json Request(httplib::Client& client, const json& request) const {
        const httplib::Result result =
            client.Post("/api?token=" + host->GetToken(), request.dump(), "application/json");
        return result ? json::parse(result->body) : json();
    }

    int GetChanged() {
        const std::lock_guard lock(mutex);
        return changed;
    }

    void WaitForChanged(int count) {
        std::unique_lock lock(mutex);
        arrived.wait(lock, [&] { return changed >= count; });
    }

    int port = -1;
    std::string target;

private:
    void Read() {
        httplib::Client client("127.0.0.1", port);
        client.Get("/events?token=" + host->GetToken(), [this](const char* data, std::size_t length) {
            const std::string text(data, length);
            {
                const std::lock_guard lock(mutex);
                opened = true;
                std::size_t at = 0;
                while ((at = text.find("\"event\":\"changed\"", at)) != std::string::npos) {
                    ++changed;
                    ++at;
                }
            }
            arrived.notify_all();
            return !stop.load();
        });
    }

    void WaitForStream() {
        std::unique_lock lock(mutex);
        arrived.wait(lock, [&] { return opened; });
    }

    std::ostringstream sink;
    VantelHost::LogTee log;
    Project project;
    std::unique_ptr<VantelHost::EditHost> host;
    std::atomic<bool> stop{false};
    std::thread loop;
    std::thread reader;
    std::mutex mutex;
    std::condition_variable arrived;
    bool opened = false;
    int changed = 0;
};

void EditRoundTrip(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    LiveSession live(count);
    httplib::Client client("127.0.0.1", live.port);
    client.set_keep_alive(true);
    client.set_tcp_nodelay(true);
    double value = 2.0;  // the gain starts at 1: each request changes it, or no update would come
    for (auto _ : state) {
        const int seen = live.GetChanged();
        const json reply =
            live.Request(client, {{"type", "setValue"}, {"path", live.target}, {"value", value}});
        if (reply.value("ok", false) != true) {
            state.SkipWithError("the edit was refused");
            break;
        }
        live.WaitForChanged(seen + 1);
        value += 1.0;
    }
    state.counters["goal_ms"] = count <= 1000 ? 20.0 : 100.0;
}
BENCHMARK(EditRoundTrip)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadGraph(benchmark::State& state) {
    LiveSession live(static_cast<int>(state.range(0)));
    httplib::Client client("127.0.0.1", live.port);
    client.set_keep_alive(true);
    client.set_tcp_nodelay(true);
    for (auto _ : state) {
        const json reply = live.Request(client, {{"type", "getGraph"}});
        if (reply["result"]["operators"].size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("the graph read back incomplete");
            break;
        }
    }
    state.counters["goal_ms"] = 1000.0;
}
BENCHMARK(ReadGraph)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace Vantel

BENCHMARK_MAIN();

// vantel run: loads a project and runs it for a number of frames with a fixed time step.
#include <chrono>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Execution/Tasks.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Support/Terminal.h>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

// How often the end of a run collects background results and runs a frame for them, at most: an operator
// that starts new work in each of those frames must not keep the run from ending.
constexpr int kMaxSettleRounds = 8;

// Gives the runner its frame duration once; the run then never ticks again, so every frame lasts as long.
class FixedStepClock : public Vantel::Clock {
public:
    explicit FixedStepClock(double step) : step(step) {}
    void Reset() override {}
    double GetFirstFrameDuration() const override { return step; }

private:
    double step;
};

// One line on stderr, rewritten in place; only for a person at a terminal.
class Progress {
public:
    explicit Progress(int frames)
        : frames(frames), shown(Vantel::IsTerminal(Vantel::StandardStream::Error)) {}
    ~Progress() {
        if (shown) {
            std::cerr << "\r\033[K" << std::flush;
        }
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(int frame) const {
        if (shown) {
            std::cerr << "\r\033[Kframe " << frame << " of " << frames << std::flush;
        }
    }

private:
    int frames;
    bool shown;
};

// Waits for background work, hands its results over and runs a frame for them, while results keep
// arriving. Returns the number of frames it ran.
int SettleBackgroundWork(Vantel::Runner& runner) {
    int frames = 0;
    for (int round = 0; round < kMaxSettleRounds; ++round) {
        Vantel::Tasks::WaitForBackgroundTasks();
        if (Vantel::Tasks::ProcessMainThreadTasks() == 0) {
            break;
        }
        runner.Execute();
        ++frames;
    }
    return frames;
}

}  // namespace

int RunCommand(const Arguments& arguments) {
    // Absolute before the working folder moves to the project's folder, in which the project's own relative
    // paths are meant.
    const std::filesystem::path path = std::filesystem::absolute(arguments.operands[0]);
    std::filesystem::path savePath;
    if (arguments.save) {
        savePath = std::filesystem::absolute(*arguments.save);
        RequireWritable(savePath);
    }
    Session session(arguments.plugins);
    Vantel::Project& project = session.LoadProject(path);
    std::filesystem::current_path(path.parent_path());

    Vantel::Runner runner(std::make_unique<FixedStepClock>(1.0 / arguments.fps));
    runner.SetGraph(project.GetRootGraph());
    runner.WaitForTick();
    const auto start = std::chrono::steady_clock::now();
    {
        const Progress progress(arguments.frames);
        for (int frame = 0; frame < arguments.frames; ++frame) {
            runner.Execute();
            Vantel::Tasks::ProcessMainThreadTasks();
            progress.Show(frame + 1);
        }
    }
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    const int settleFrames = SettleBackgroundWork(runner);

    Out() << "ran " << arguments.frames << " frames";
    if (settleFrames > 0) {
        Out() << " (and " << settleFrames << " more for background results)";
    }
    Out() << ", " << runner.GetOperatorsRun() << " operators run, " << std::fixed << std::setprecision(3)
          << (arguments.frames > 0 ? elapsed.count() / arguments.frames : 0.0) << " ms per frame\n";
    if (arguments.save) {
        project.Serialize(savePath.string());
        Out() << "saved " << savePath.string() << '\n';
    }
    return kExitOk;
}

}  // namespace VantelHost

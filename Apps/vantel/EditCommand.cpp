// vantel edit: holds a project open, runs it live and serves it to an editor until Ctrl+C.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <future>
#include <iostream>
#include <memory>
#include <mutex>

#include <Vantel/Execution/Tasks.h>
#include <Vantel/Projects/Project.h>

#include "Commands.h"
#include "Edit/EditServer.h"
#include "Edit/EditSession.h"
#include "Edit/LogTee.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

using nlohmann::json;

std::atomic<bool> interrupted{false};

extern "C" void OnInterrupt(int) {
    interrupted = true;
}

// Where unsaved work goes when the session ends: "Scene.json" gives "Scene.recovery.json" beside it.
std::filesystem::path RecoveryFile(const std::filesystem::path& file) {
    return file.parent_path() / (file.stem().string() + ".recovery" + file.extension().string());
}

// Wakes the main loop early when a request arrives, so that a reply does not wait for the next frame.
class Wakeup {
public:
    void Notify() {
        {
            const std::lock_guard lock(mutex);
            woken = true;
        }
        condition.notify_one();
    }
    void WaitFor(double seconds) {
        std::unique_lock lock(mutex);
        condition.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return woken; });
        woken = false;
    }

private:
    std::mutex mutex;
    std::condition_variable condition;
    bool woken = false;
};

// How long the loop sleeps at most, so that Ctrl+C is noticed soon.
constexpr double kLongestSleep = 0.05;

}  // namespace

int EditCommand(const Arguments& arguments) {
    const std::filesystem::path file = std::filesystem::absolute(arguments.operands[0]);
    Session session(arguments.plugins);
    const bool exists = std::filesystem::exists(file);
    Vantel::Project& project = exists ? session.LoadProject(file) : session.NewProject();
    if (!exists) {
        RequireWritable(file.parent_path() / ".vantel-edit-probe");
        std::filesystem::remove(file.parent_path() / ".vantel-edit-probe");
    }
    std::filesystem::current_path(file.parent_path());

    LogTee log(std::cout);
    EditSession edit(project, file, arguments.fps, log);
    const std::string token = MakeSessionToken();
    EditServer server(token);
    Wakeup wakeup;
    std::atomic<bool> ending{false};
    // A client that opens the event stream gets every value and preview with the next frame update.
    const auto subscribed = [&edit, &wakeup] {
        Vantel::Tasks::RunOnMainThread([&edit] { edit.ResendAll(); });
        wakeup.Notify();
    };
    const auto handle = [&](json request) -> json {
        auto reply = std::make_shared<std::promise<json>>();
        std::future<json> answer = reply->get_future();
        Vantel::Tasks::RunOnMainThread(
            [&edit, reply, request = std::move(request)] { reply->set_value(edit.Handle(request)); });
        wakeup.Notify();
        while (answer.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
            if (ending) {
                return {{"ok", false}, {"error", "the session is ending"}};
            }
        }
        return answer.get();
    };
    const int port = server.Start(arguments.port, handle, subscribed);
    if (port < 0) {
        Fail(kExitFailed, "could not listen on 127.0.0.1:" + std::to_string(arguments.port));
    }
    edit.SetPublisher([&server](const json& update) { server.Publish(update); });
    log.SetListener([&server](const std::string& line) {
        server.Publish({{"event", "log"}, {"line", line}});
    });

    Out() << (exists ? "editing " : "editing new project ") << file.string()
          << "\nopen http://127.0.0.1:" << port << "/?token=" << token << "\n";
    Out().flush();
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
    while (!interrupted) {
        Vantel::Tasks::ProcessMainThreadTasks();
        const double wait = edit.RunDueFrame();
        edit.PublishFrameUpdate();
        if (wait > 0.0) {
            wakeup.WaitFor(std::min(wait, kLongestSleep));
        }
    }
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);

    ending = true;
    server.Stop();
    log.SetListener(nullptr);
    edit.SetPublisher(nullptr);
    if (edit.HasUnsavedChanges()) {
        const std::filesystem::path recovery = RecoveryFile(file);
        edit.SaveTo(recovery);
        Out() << "unsaved changes kept in " << recovery.string() << "\n";
    }
    Out() << "edit session ended\n";
    return kExitOk;
}

}  // namespace VantelHost

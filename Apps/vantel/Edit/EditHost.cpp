#include "EditHost.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>

#include <Vantel/Execution/Tasks.h>

#include "EditServer.h"
#include "EditSession.h"
#include "LogTee.h"
#include "PageFiles.h"

namespace VantelHost {
namespace {

using nlohmann::json;

// How long the loop sleeps at most, so that a stop is noticed soon.
constexpr double kLongestSleep = 0.05;

// Wakes the loop early when a request arrives, so that a reply does not wait for the next frame.
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

}  // namespace

class EditHost::Implementation {
public:
    Implementation(Vantel::Project& project, const std::filesystem::path& file, double fps, LogTee& log)
        : log(log), session(project, file, fps, log), server(MakeSessionToken()) {}

    ~Implementation() {
        Stop();
        log.SetListener(nullptr);
    }

    int Start(int port) {
        server.SetPageFolder(GetPageFolder());
        // A client that opens the event stream gets every value and preview with the next frame update.
        const auto subscribed = [this] {
            Vantel::Tasks::RunOnMainThread([this] { session.ResendAll(); });
            wakeup.Notify();
        };
        const int bound = server.Start(
            port, [this](json request) { return Submit(std::move(request)); }, subscribed);
        if (bound >= 0) {
            session.SetPublisher([this](const json& update) { server.Publish(update); });
            log.SetListener([this](const std::string& line) {
                server.Publish({{"event", "log"}, {"line", line}});
            });
        }
        return bound;
    }

    void Run(const std::atomic<bool>& stop) {
        while (!stop) {
            Vantel::Tasks::ProcessMainThreadTasks();
            const double wait = session.RunDueFrame();
            session.PublishFrameUpdate();
            if (wait > 0.0) {
                wakeup.WaitFor(std::min(wait, kLongestSleep));
            }
        }
    }

    void Stop() {
        ending = true;
        server.Stop();
        session.SetPublisher(nullptr);
    }

    LogTee& log;
    EditSession session;
    EditServer server;

private:
    // On a server thread: hands the request to the loop's thread and waits for its reply.
    std::string Submit(json request) {
        auto reply = std::make_shared<std::promise<std::string>>();
        std::future<std::string> answer = reply->get_future();
        Vantel::Tasks::RunOnMainThread(
            [this, reply, request = std::move(request)] { reply->set_value(session.Handle(request)); });
        wakeup.Notify();
        while (answer.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
            if (ending) {
                return json{{"ok", false}, {"error", "the session is ending"}}.dump();
            }
        }
        return answer.get();
    }

    Wakeup wakeup;
    std::atomic<bool> ending{false};
};

EditHost::EditHost(Vantel::Project& project, const std::filesystem::path& file, double fps, LogTee& log)
    : implementation(std::make_unique<Implementation>(project, file, fps, log)) {}

EditHost::~EditHost() = default;

int EditHost::Start(int port) {
    return implementation->Start(port);
}

const std::string& EditHost::GetToken() const {
    return implementation->server.GetToken();
}

void EditHost::Run(const std::atomic<bool>& stop) {
    implementation->Run(stop);
}

void EditHost::Stop() {
    implementation->Stop();
}

EditSession& EditHost::GetSession() {
    return implementation->session;
}

}  // namespace VantelHost

// EditHost.h: an edit session and its server joined up: requests reach the session on the thread that runs
// the loop, and its updates and log lines reach the event streams.
#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>

namespace Vantel {
class Project;
}

namespace VantelHost {

class EditSession;
class LogTee;

// EditHost
//
// Start() serves; Run() is the session's loop: it answers requests between frames, runs frames at the
// session's rate and publishes frame updates, until `stop` is set. The thread that calls Run is the model's
// thread. Stop() ends the server; requests still waiting are answered "the session is ending".
class EditHost {
public:
    EditHost(Vantel::Project& project, const std::filesystem::path& file, double fps, LogTee& log);
    ~EditHost();
    EditHost(const EditHost&) = delete;
    EditHost& operator=(const EditHost&) = delete;

    // The port served on, or -1 when `port` (0: a free one) could not be bound.
    int Start(int port);
    const std::string& GetToken() const;
    void Run(const std::atomic<bool>& stop);
    void Stop();
    EditSession& GetSession();

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace VantelHost

// EditSession.h: the model side of `vantel edit`: one project, its undo history, its run state, and the
// requests of the edit protocol. Main thread only.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

namespace Vantel {
class Project;
}

namespace VantelHost {

class LogTee;

// EditSession
//
// Handle() answers one request: {"id": any, "type": "...", ...} gives the text of {"id": same, "ok": true,
// "result": ...} or {"id": same, "ok": false, "error": "..."}. Each edit is one committed transaction in the
// history; an edit that is refused or fails part way is rolled back, so a refusal changes nothing. The README
// lists every request. Frames run through RunDueFrame while the session runs.
class EditSession {
public:
    // The project is not owned. `file` is where "save" writes; `log` gives the reason of a refusal.
    EditSession(Vantel::Project& project, std::filesystem::path file, double fps, const LogTee& log);
    ~EditSession();
    EditSession(const EditSession&) = delete;
    EditSession& operator=(const EditSession&) = delete;

    std::string Handle(const nlohmann::json& request);

    // Gets every pushed update: {"event": "changed" | "frame" | "state", ...}.
    void SetPublisher(std::function<void(const nlohmann::json& update)> publisher);

    // Runs a frame when one is due and the session is running; returns the seconds until the next is due.
    double RunDueFrame();
    // Sends the values that changed since the last frame update, at most `rate` times a second.
    void PublishFrameUpdate();
    // The next frame update sends every value and preview: for a client that has just connected.
    void ResendAll();

    // True when the project differs from what was last saved or loaded.
    bool HasUnsavedChanges() const;
    void SaveTo(const std::filesystem::path& file);

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace VantelHost

// EditClient.h: a `vantel edit` process under test, and a scripted client of its protocol.
#pragma once

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace EditTesting {

// Starts `vantel edit PROJECT` in the project's folder and reads the address it prints. Stop() sends
// SIGINT and waits; the destructor does too, when the test has not.
class EditProcess {
public:
    EditProcess(const std::filesystem::path& host, const std::filesystem::path& project);
    ~EditProcess();
    EditProcess(const EditProcess&) = delete;
    EditProcess& operator=(const EditProcess&) = delete;

    int GetPort() const { return port; }
    const std::string& GetToken() const { return token; }
    // What the process printed on standard output after the address, once it has ended.
    std::string GetOutput() const { return output; }
    // Sends `signal` and returns the exit code.
    int Stop(int signal = SIGINT);

    // One request: the reply's JSON, or {"status": N} with the HTTP status when the reply is not JSON.
    nlohmann::json Request(const nlohmann::json& request);
    // The raw exchange, for the tests of refusals: returns the HTTP status.
    int Post(const std::string& body, const std::string& token, const std::string& origin = "",
             const std::string& host = "");
    // GET `path`: the HTTP status (0 when nothing answered) and the body.
    std::pair<int, std::string> Get(const std::string& path);

private:
    int pid = -1;
    int outFd = -1;
    int port = 0;
    std::string token;
    std::string output;
};

// Reads the event stream of a session on a thread of its own.
class EventReader {
public:
    // Returns once the stream is open, so that every update published afterwards reaches the reader.
    EventReader(int port, const std::string& token);
    ~EventReader();
    EventReader(const EventReader&) = delete;
    EventReader& operator=(const EventReader&) = delete;

    // Waits up to `seconds` for an event for which `matches` is true; returns it, or null.
    nlohmann::json WaitFor(const std::function<bool(const nlohmann::json&)>& matches, double seconds);

private:
    std::thread thread;
    std::atomic<bool> stop{false};
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<nlohmann::json> events;
    std::string pending;
    bool opened = false;
};

}  // namespace EditTesting

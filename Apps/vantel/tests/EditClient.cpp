#include "EditClient.h"

#include <csignal>
#include <stdexcept>

#include <httplib.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

namespace EditTesting {
namespace {

std::string ReadLine(int fd) {
    std::string line;
    char c = 0;
    while (read(fd, &c, 1) == 1 && c != '\n') {
        line += c;
    }
    return line;
}

}  // namespace

EditProcess::EditProcess(const std::filesystem::path& host, const std::filesystem::path& project) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) {
        throw std::runtime_error("pipe failed");
    }
    pid = fork();
    if (pid == 0) {
#if defined(__linux__)
        // A test that is killed (a timeout, a hung planted bug) must not leave its server running.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
        dup2(pipeFds[1], STDOUT_FILENO);
        close(pipeFds[0]);
        close(pipeFds[1]);
        const std::string folder = project.parent_path().string();
        const std::string log = (project.parent_path() / "edit-log.txt").string();
        freopen(log.c_str(), "w", stderr);
        if (chdir(folder.c_str()) != 0) {
            _exit(127);
        }
        execl(host.c_str(), host.c_str(), "edit", project.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(pipeFds[1]);
    outFd = pipeFds[0];
    ReadLine(outFd);  // "editing <file>"
    const std::string address = ReadLine(outFd);
    const std::size_t colon = address.rfind(':');
    const std::size_t slash = address.find('/', colon);
    const std::size_t equals = address.rfind('=');
    if (colon == std::string::npos || slash == std::string::npos || equals == std::string::npos) {
        Stop(SIGKILL);  // no destructor runs after a constructor throws
        throw std::runtime_error("vantel edit printed no address: '" + address + "'");
    }
    port = std::stoi(address.substr(colon + 1, slash - colon - 1));
    token = address.substr(equals + 1);
}

EditProcess::~EditProcess() {
    if (pid > 0) {
        Stop();
    }
}

int EditProcess::Stop(int signal) {
    kill(pid, signal);
    std::string line;
    while (!(line = ReadLine(outFd)).empty()) {
        output += line + "\n";
    }
    int status = 0;
    waitpid(pid, &status, 0);
    close(outFd);
    pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

nlohmann::json EditProcess::Request(const nlohmann::json& request) {
    httplib::Client client("127.0.0.1", port);
    const httplib::Result result = client.Post("/api?token=" + token, request.dump(), "application/json");
    if (!result) {
        return {{"status", 0}};
    }
    nlohmann::json reply = nlohmann::json::parse(result->body, nullptr, false);
    return reply.is_discarded() ? nlohmann::json{{"status", result->status}} : reply;
}

int EditProcess::Post(const std::string& body, const std::string& givenToken, const std::string& origin,
                      const std::string& host) {
    httplib::Client client("127.0.0.1", port);
    httplib::Headers headers;
    if (!origin.empty()) {
        headers.emplace("Origin", origin);
    }
    if (!host.empty()) {
        headers.emplace("Host", host);
    }
    const httplib::Result result = client.Post("/api?token=" + givenToken, headers, body, "application/json");
    return result ? result->status : 0;
}

std::pair<int, std::string> EditProcess::Get(const std::string& path) {
    httplib::Client client("127.0.0.1", port);
    const httplib::Result result = client.Get(path);
    return result ? std::pair(result->status, result->body) : std::pair(0, std::string());
}

EventReader::EventReader(int port, const std::string& token) {
    thread = std::thread([this, port, token] {
        httplib::Client client("127.0.0.1", port);
        client.Get("/events?token=" + token, [this](const char* data, std::size_t length) {
            const std::lock_guard lock(mutex);
            opened = true;
            pending.append(data, length);
            std::size_t end = 0;
            while ((end = pending.find("\n\n")) != std::string::npos) {
                const std::string event = pending.substr(0, end);
                pending.erase(0, end + 2);
                if (event.rfind("data: ", 0) == 0) {
                    events.push_back(nlohmann::json::parse(event.substr(6)));
                }
            }
            arrived.notify_all();
            return !stop.load();
        });
    });
    // The server subscribes a stream before it writes anything to it (an idle stream gets a comment within a
    // fraction of a second), so once bytes arrive no later update can be missed.
    std::unique_lock lock(mutex);
    arrived.wait_for(lock, std::chrono::seconds(10), [this] { return opened; });
}

EventReader::~EventReader() {
    stop = true;
    thread.join();
}

nlohmann::json EventReader::WaitFor(const std::function<bool(const nlohmann::json&)>& matches,
                                    double seconds) {
    std::unique_lock lock(mutex);
    nlohmann::json found;
    arrived.wait_for(lock, std::chrono::duration<double>(seconds), [&] {
        for (const nlohmann::json& event : events) {
            if (matches(event)) {
                found = event;
                return true;
            }
        }
        return false;
    });
    return found;
}

}  // namespace EditTesting

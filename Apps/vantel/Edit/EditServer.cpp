#include "EditServer.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <random>
#include <thread>

#include <httplib.h>

#include "PageFiles.h"

namespace VantelHost {
namespace {

using nlohmann::json;

// Replies name their charset, which also keeps the transport from compressing them: on the loopback its
// slowest-and-smallest compression costs far more time than the bytes it saves (seconds for a large graph).
constexpr const char* kJsonType = "application/json; charset=utf-8";

// Updates a slow reader has not taken yet; past this the oldest are dropped, and the client re-reads.
constexpr std::size_t kMaxQueuedUpdates = 1024;
// What "/" answers when the host has no page beside it (a build configured without it).
constexpr const char* kNoPage =
    "<!doctype html><title>vantel edit</title><p>The edit session is running, but the editor page is not "
    "built beside the host (bin/editor/index.html): build the target vantel-editor-page. The protocol is "
    "POST /api and GET /events.</p>";
// How often a waiting event stream looks whether the server is stopping.
constexpr auto kStreamPoll = std::chrono::milliseconds(200);

void Reply(httplib::Response& response, int status, const json& body) {
    response.status = status;
    response.set_content(body.dump(), kJsonType);
}

// One open event stream's queue.
struct Subscriber {
    std::deque<std::string> events;
};

}  // namespace

class EditServer::Implementation {
public:
    explicit Implementation(std::string token) : token(std::move(token)) {}

    int Start(int wantedPort, RequestHandler newHandler, std::function<void()> newSubscribed) {
        handler = std::move(newHandler);
        subscribed = std::move(newSubscribed);
        server.set_payload_max_length(kMaxRequestBytes);
        // Replies and events are small writes that a person waits for: no coalescing delay.
        server.set_tcp_nodelay(true);
        server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
            // The page's assets carry no token (the page names them by path), so they need only the Host
            // rule.
            const bool asset = request.method == "GET" && request.path.rfind("/assets/", 0) == 0;
            if (!(asset ? IsOwnAddress(request) : IsAllowed(request))) {
                Reply(response, 403,
                      {{"ok", false}, {"error", "refused: not this session's token, host or origin"}});
                return httplib::Server::HandlerResponse::Handled;
            }
            return httplib::Server::HandlerResponse::Unhandled;
        });
        server.Post("/api", [this](const httplib::Request& request, httplib::Response& response) {
            HandleApi(request, response);
        });
        server.Get("/events",
                   [this](const httplib::Request&, httplib::Response& response) { OpenStream(response); });
        server.Get("/", [this](const httplib::Request& request, httplib::Response& response) {
            ServePage(request, response);
        });
        server.Get(R"(/assets/.+)", [this](const httplib::Request& request, httplib::Response& response) {
            ServePage(request, response);
        });
        if (wantedPort == 0) {
            port = server.bind_to_any_port("127.0.0.1");
        } else {
            port = server.bind_to_port("127.0.0.1", wantedPort) ? wantedPort : -1;
        }
        if (port < 0) {
            return -1;
        }
        thread = std::thread([this] { server.listen_after_bind(); });
        return port;
    }

    void Publish(const json& update) {
        {
            const std::lock_guard lock(mutex);
            if (subscribers.empty()) {
                return;  // nobody listens: spare the text
            }
        }
        const std::string event =
            "data: " + update.dump(-1, ' ', false, json::error_handler_t::replace) + "\n\n";
        {
            const std::lock_guard lock(mutex);
            for (Subscriber* subscriber : subscribers) {
                subscriber->events.push_back(event);
                if (subscriber->events.size() > kMaxQueuedUpdates) {
                    subscriber->events.pop_front();
                }
            }
        }
        changed.notify_all();
    }

    void Stop() {
        stopping = true;
        changed.notify_all();
        server.stop();
        if (thread.joinable()) {
            thread.join();
        }
    }

    const std::string token;
    std::filesystem::path pageFolder;

private:
    bool IsAllowed(const httplib::Request& request) const {
        const std::string given = request.has_param("token") ? request.get_param_value("token")
                                                             : request.get_header_value("X-Vantel-Token");
        return given == token && IsOwnAddress(request);
    }

    bool IsOwnAddress(const httplib::Request& request) const {
        // A page elsewhere can make a browser send requests here; only the session's own names pass.
        const std::string self = std::to_string(port);
        const std::string host = request.get_header_value("Host");
        if (host != "127.0.0.1:" + self && host != "localhost:" + self) {
            return false;
        }
        const std::string origin = request.get_header_value("Origin");
        return origin.empty() || origin == "http://127.0.0.1:" + self || origin == "http://localhost:" + self;
    }

    void ServePage(const httplib::Request& request, httplib::Response& response) const {
        const std::optional<std::filesystem::path> file = FindPageFile(pageFolder, request.path);
        const std::optional<std::string> text = file ? ReadPageFile(*file) : std::nullopt;
        if (!text) {
            response.status = 404;
            response.set_content(request.path == "/" ? kNoPage : "no such file", "text/html; charset=utf-8");
            return;
        }
        // The bundler names assets by their content; the index names them, so it is always read afresh.
        response.set_header("Cache-Control", request.path == "/" ? "no-store" : "max-age=86400");
        response.set_content(*text, GetPageContentType(*file));
    }

    void HandleApi(const httplib::Request& request, httplib::Response& response) {
        json parsed = json::parse(request.body, nullptr, false);
        if (parsed.is_discarded()) {
            Reply(response, 400, {{"ok", false}, {"error", "the request is not valid JSON"}});
            return;
        }
        if (stopping) {
            Reply(response, 503, {{"ok", false}, {"error", "the session is ending"}});
            return;
        }
        response.status = 200;
        response.set_content(handler(std::move(parsed)), kJsonType);
    }

    void OpenStream(httplib::Response& response) {
        auto subscriber = std::make_shared<Subscriber>();
        {
            const std::lock_guard lock(mutex);
            subscribers.push_back(subscriber.get());
        }
        if (subscribed) {
            subscribed();
        }
        response.set_header("Cache-Control", "no-store");
        response.set_chunked_content_provider(
            "text/event-stream",
            [this, subscriber](std::size_t, httplib::DataSink& sink) {
                std::unique_lock lock(mutex);
                changed.wait_for(lock, kStreamPoll, [&] { return stopping || !subscriber->events.empty(); });
                if (stopping) {
                    return false;
                }
                std::deque<std::string> events;
                events.swap(subscriber->events);
                lock.unlock();
                if (events.empty()) {
                    // A comment keeps proxies and the client's timers from closing a quiet stream.
                    return sink.write(": idle\n\n", 8);
                }
                for (const std::string& event : events) {
                    if (!sink.write(event.data(), event.size())) {
                        return false;
                    }
                }
                return true;
            },
            [this, subscriber](bool) {
                const std::lock_guard lock(mutex);
                subscribers.remove(subscriber.get());
            });
    }

    RequestHandler handler;
    std::function<void()> subscribed;
    httplib::Server server;
    std::thread thread;
    int port = -1;
    std::atomic<bool> stopping{false};
    std::mutex mutex;
    std::condition_variable changed;
    std::list<Subscriber*> subscribers;
};

EditServer::EditServer(std::string token)
    : implementation(std::make_unique<Implementation>(std::move(token))) {}

EditServer::~EditServer() {
    Stop();
}

void EditServer::SetPageFolder(std::filesystem::path folder) {
    implementation->pageFolder = std::move(folder);
}

int EditServer::Start(int port, RequestHandler handler, std::function<void()> subscribed) {
    return implementation->Start(port, std::move(handler), std::move(subscribed));
}

void EditServer::Publish(const nlohmann::json& update) {
    implementation->Publish(update);
}

void EditServer::Stop() {
    implementation->Stop();
}

const std::string& EditServer::GetToken() const {
    return implementation->token;
}

std::string MakeSessionToken() {
    std::random_device device;
    std::string token;
    static constexpr char kDigits[] = "0123456789abcdef";
    for (int i = 0; i < 32; ++i) {
        token += kDigits[device() % 16];
    }
    return token;
}

}  // namespace VantelHost

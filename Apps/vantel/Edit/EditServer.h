// EditServer.h: the edit session's local connection: HTTP for requests, server-sent events for updates.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

namespace VantelHost {

// EditServer
//
// Listens on 127.0.0.1 only. Every request must carry the session token (the query parameter "token" or the
// header "X-Vantel-Token"), name the server itself as its Host, and come from no foreign Origin; anything
// else is refused with 403 and changes nothing. Requests over kMaxRequestBytes are refused with 413.
//
//   POST /api?token=T          one request of the edit protocol, JSON in and out
//   GET  /events?token=T       the pushed updates, one JSON object per server-sent event
//   GET  /?token=T             the editor page (its index.html), or a note when it is not built
//   GET  /assets/...           the page's scripts and styles: no token, but the same Host and Origin rule
//
// The server's threads never touch the model: each request goes to the handler given to Start, which hands
// it to the main thread and waits for the reply.
class EditServer {
public:
    static constexpr std::size_t kMaxRequestBytes = 4 * 1024 * 1024;

    // Gives the reply's JSON text.
    using RequestHandler = std::function<std::string(nlohmann::json request)>;

    explicit EditServer(std::string token);
    ~EditServer();
    EditServer(const EditServer&) = delete;
    EditServer& operator=(const EditServer&) = delete;

    // The built editor page to serve at "/"; call before Start. Without one "/" says how to build it.
    void SetPageFolder(std::filesystem::path folder);
    // Binds to `port` (0: a free one) and serves on a thread of its own. Returns the port, or -1 when the
    // port could not be bound. `subscribed` runs on a server thread when an event stream opens.
    int Start(int port, RequestHandler handler, std::function<void()> subscribed);
    // Queues `update` for every open event stream. Thread-safe.
    void Publish(const nlohmann::json& update);
    // Ends the event streams and stops serving; waits for the server's threads.
    void Stop();
    const std::string& GetToken() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

// A token of 128 random bits in hexadecimal.
std::string MakeSessionToken();

}  // namespace VantelHost

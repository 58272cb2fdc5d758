#include <Vantel/Support/StatusEvent.h>

#include <cstddef>
#include <iostream>
#include <vector>

namespace Vantel {
namespace {

std::vector<StatusEventHandler>& Handlers() {
    static std::vector<StatusEventHandler> handlers;
    return handlers;
}

}  // namespace

std::string FormatStatusEvent(const StatusEvent& event) {
    std::string text;
    text.append(event.level).append(": '");
    if (!event.message.empty() && !event.subject.empty()) {
        text.append(event.subject).append("'\n  with message: '").append(event.message);
    } else if (!event.message.empty()) {
        text.append(event.message);
    } else {
        text.append(event.subject);
    }
    text.append("'\n  at ").append(event.file).append(":").append(std::to_string(event.line));
    text.append(" in function '").append(event.function).append("'\n\n");
    return text;
}

void SendStatusEvent(const StatusEvent& event) {
    std::cout << FormatStatusEvent(event);
    // By index and up to the count at the start: a handler may add handlers, which moves the list, and those
    // start with the next event.
    const std::vector<StatusEventHandler>& handlers = Handlers();
    const std::size_t count = handlers.size();
    for (std::size_t index = 0; index < count; ++index) {
        handlers[index](event);
    }
}

void AddStatusEventHandler(StatusEventHandler handler) {
    if (handler == nullptr) {
        SendStatusEvent({.level = "Warning",
                         .subject = "",
                         .file = __FILE__,
                         .function = "AddStatusEventHandler",
                         .message = "StatusEventHandler must not be null",
                         .line = __LINE__});
        return;
    }
    Handlers().push_back(handler);
}

}  // namespace Vantel

#include <Vantel/Support/Logging.h>

#include <iostream>
#include <utility>

#include "Support/LogListener.h"

namespace Vantel {
namespace {

// The newest listener of this thread; each one keeps the one it hides.
thread_local Detail::LogListener* currentListener = nullptr;

void WriteLine(std::string_view prefix, std::string_view message) {
    // One statement, so that lines from different threads are not torn apart by the stream.
    std::cout << prefix << message << '\n' << std::flush;
}

}  // namespace

namespace Detail {

LogListener::LogListener() : previous(std::exchange(currentListener, this)) {}

LogListener::~LogListener() {
    currentListener = previous;
}

std::vector<std::string> LogListener::TakeMessages() {
    return std::exchange(messages, {});
}

void LogListener::Hear(std::string_view message) {
    if (currentListener != nullptr) {
        currentListener->messages.emplace_back(message);
    }
}

}  // namespace Detail

void LogInfo(std::string_view message) {
    WriteLine("[Info] ", message);
}
void LogWarning(std::string_view message) {
    WriteLine("[Warning] ", message);
    Detail::LogListener::Hear(message);
}
void LogError(std::string_view message) {
    WriteLine("[Error] ", message);
    Detail::LogListener::Hear(message);
}
void LogFatal(std::string_view message) {
    WriteLine("[Fatal] ", message);
    Detail::LogListener::Hear(message);
}

}  // namespace Vantel

// LogListener.h: hears the warnings and errors that this thread logs while the listener lives.
//
//   Detail::LogListener listener;
//   parameter.DeserializeValue(value);
//   for (std::string& message : listener.TakeMessages()) { ... }   // as logged, without "[Warning] "
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vantel::Detail {

// LogListener
//
// Scoped and per thread: a line is still written as always, and only the thread's newest listener hears it,
// the one closest to the code that logged. Info lines are not heard. Listeners end in the reverse order of
// their making, so it is neither copied nor moved; make it on the stack.
class LogListener {
public:
    LogListener();
    ~LogListener();
    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;

    // The messages heard since the last call, in order; empty when none.
    std::vector<std::string> TakeMessages();

    // What LogWarning, LogError and LogFatal call: hands `message` to this thread's newest listener, if any.
    static void Hear(std::string_view message);

private:
    LogListener* previous;
    std::vector<std::string> messages;
};

}  // namespace Vantel::Detail

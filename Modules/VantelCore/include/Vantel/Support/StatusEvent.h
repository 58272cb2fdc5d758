// StatusEvent.h: structured reports that a host can show in its own user interface.
//
//   void ShowInPanel(const StatusEvent& event) { panel.Add(event.level, event.message); }
//   AddStatusEventHandler(&ShowInPanel);  // at start-up, on the main thread
#pragma once

#include <string>
#include <string_view>

#include <Vantel/Export.h>

namespace Vantel {

// StatusEvent
//
// One report: its kind ("Warning"), what it is about, the text, and the source place that raised it. The
// views must stay valid during the call; in practice they point at literals.
struct StatusEvent {
    std::string_view level;
    std::string_view subject;
    std::string_view file;
    std::string_view function;
    std::string message;
    int line = 0;
};

using StatusEventHandler = void (*)(const StatusEvent&);

// Appends `handler` to the process-wide list; the same handler added twice is called twice. A null handler is
// refused with a "Warning" status event "StatusEventHandler must not be null". Main thread only, before other
// threads may send events: the list is not locked.
VANTEL_API void AddStatusEventHandler(StatusEventHandler handler);

// Writes FormatStatusEvent(event) to standard output, then calls every handler in registration order. A
// handler added while the event is sent is called from the next event on.
VANTEL_API void SendStatusEvent(const StatusEvent& event);

// The text block written for an event, ending in an empty line:
//   Warning: 'subject'
//     with message: 'message'
//     at file.cpp:12 in function 'Function'
VANTEL_API std::string FormatStatusEvent(const StatusEvent& event);

}  // namespace Vantel

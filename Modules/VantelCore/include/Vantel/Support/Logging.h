// Logging.h: one-line reports to standard output.
//
//   LogWarning("Failed to register type, name is already taken: \"Vantel.Foo\"");
//   // prints: [Warning] Failed to register type, name is already taken: "Vantel.Foo"
#pragma once

#include <string_view>

#include <Vantel/Export.h>

namespace Vantel {

// Each function writes its prefix ("[Info] ", "[Warning] ", "[Error] ", "[Fatal] "), the message as it stands
// and a newline in one stream statement, then flushes. There are no levels to configure: every call writes.
// Thread-safe as far as the standard output stream is: lines from two threads do not share a statement.
VANTEL_API void LogInfo(std::string_view message);
VANTEL_API void LogWarning(std::string_view message);
VANTEL_API void LogError(std::string_view message);
// Only writes; it does not end the process.
VANTEL_API void LogFatal(std::string_view message);

}  // namespace Vantel

// Terminal.h: whether the host's standard streams reach a person at a terminal.
//
//   if (IsTerminal(StandardStream::Error)) {
//       std::cerr << "\rframe " << frame << " of " << count << std::flush;
//   }
#pragma once

#include <Vantel/Export.h>

namespace Vantel {

enum class StandardStream {
    Output,
    Error,
};

// True when `stream` is attached to a terminal (a console on Windows); false for a file or a pipe. Hosts use
// it to show progress that only a person watching needs. Thread-safe.
VANTEL_API bool IsTerminal(StandardStream stream);

}  // namespace Vantel

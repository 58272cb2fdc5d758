// The POSIX side of terminal detection: isatty.
#ifndef _WIN32

#include <unistd.h>

#include <Vantel/Support/Terminal.h>

namespace Vantel {

bool IsTerminal(StandardStream stream) {
    return isatty(stream == StandardStream::Error ? STDERR_FILENO : STDOUT_FILENO) == 1;
}

}  // namespace Vantel

#endif

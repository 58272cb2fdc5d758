// The Win32 side of terminal detection: a console handle answers GetConsoleMode.
#ifdef _WIN32

#include <windows.h>

#include <Vantel/Support/Terminal.h>

namespace Vantel {

bool IsTerminal(StandardStream stream) {
    const HANDLE handle =
        GetStdHandle(stream == StandardStream::Error ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return handle != nullptr && handle != INVALID_HANDLE_VALUE && GetConsoleMode(handle, &mode) != 0;
}

}  // namespace Vantel

#endif

// Output.h: exit codes, the host's own failures, and where output and library log lines go.
#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>

namespace VantelHost {

// The exit codes of every command.
enum ExitCode : int {
    kExitOk = 0,
    kExitFailed = 1,  // the project or the command failed: a broken file, dropped entries, an unknown type
    kExitUsage = 2,   // an unknown command or option, a missing or extra argument
    kExitMissingFile = 3,   // a file named on the command line does not exist
    kExitPluginFailed = 4,  // a plug-in named with --plugin is unknown or does not load
};

// A failure that ends the command: main prints "vantel: <message>" on stderr and exits with `code`.
class HostError : public std::runtime_error {
public:
    HostError(int code, const std::string& message) : std::runtime_error(message), code(code) {}
    int code;
};

[[noreturn]] void Fail(int code, const std::string& message);

// The library logs to standard output. The host keeps standard output for its results (DOT, type lists,
// reports) and sends the library's lines to stderr instead, as they are written. Call once, first in main.
void SeparateLibraryLog();
// Standard output for the host's results.
std::ostream& Out();

}  // namespace VantelHost

#include <Vantel/Support/Logging.h>

#include <iostream>

namespace Vantel {
namespace {

void WriteLine(std::string_view prefix, std::string_view message) {
    // One statement, so that lines from different threads are not torn apart by the stream.
    std::cout << prefix << message << '\n' << std::flush;
}

}  // namespace

void LogInfo(std::string_view message) {
    WriteLine("[Info] ", message);
}
void LogWarning(std::string_view message) {
    WriteLine("[Warning] ", message);
}
void LogError(std::string_view message) {
    WriteLine("[Error] ", message);
}
void LogFatal(std::string_view message) {
    WriteLine("[Fatal] ", message);
}

}  // namespace Vantel

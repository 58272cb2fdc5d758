// LogTee.h: the library's log lines, passed on to the terminal and kept for the edit session.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace VantelHost {

// LogTee
//
// While it lives, whatever is written to `stream` still goes where it went, and every whole line is also
// numbered, kept (the most recent ones) and handed to the listener. Lines from several threads never mix:
// each thread gathers its own line until the newline. The listener runs on the writing thread, so it must be
// thread-safe.
class LogTee {
public:
    explicit LogTee(std::ostream& stream);
    ~LogTee();
    LogTee(const LogTee&) = delete;
    LogTee& operator=(const LogTee&) = delete;

    void SetListener(std::function<void(const std::string& line)> listener);
    // The number the next line will get; with LinesSince, the lines an action caused.
    std::uint64_t GetNextLineNumber() const;
    std::vector<std::string> LinesSince(std::uint64_t number) const;

private:
    class Buffer;
    std::ostream& stream;
    std::unique_ptr<Buffer> buffer;
    std::streambuf* previous;
};

}  // namespace VantelHost

// LogCapture.h: captures what the library writes to standard output during a scope.
//
//   LogCapture log;
//   object.SetKey("a/b");
//   EXPECT_EQ(log.Text(), "[Error] Object::SetKey: 'a/b' is not a valid key.\n");
#pragma once

#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace Vantel::Testing {

// Redirects std::cout into a buffer for its lifetime; not for use across threads that log concurrently.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Everything written so far.
    std::string Text() const { return buffer.str(); }
    // The lines written so far, without their newlines.
    std::vector<std::string> Lines() const;
    // Forgets what was written so far.
    void Clear();

private:
    std::ostringstream buffer;
    std::streambuf* previous;
};

}  // namespace Vantel::Testing

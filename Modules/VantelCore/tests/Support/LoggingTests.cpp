#include <gtest/gtest.h>

#include <vector>

#include <Vantel/Support/Logging.h>
#include <Vantel/Support/StatusEvent.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

TEST(Logging, EachFunctionWritesItsPrefixAndOneLine) {
    LogCapture log;
    LogInfo("loaded");
    LogWarning("");
    LogError("two\nlines");
    LogFatal("stop");
    EXPECT_EQ(log.Text(), "[Info] loaded\n[Warning] \n[Error] two\nlines\n[Fatal] stop\n");
}

TEST(StatusEvents, FormatChoosesTheFirstLineBySubjectAndMessage) {
    StatusEvent event{
        .level = "Warning", .subject = "Blur", .file = "a.cpp", .function = "F", .message = "", .line = 7};
    const std::string position = "  at a.cpp:7 in function 'F'\n\n";

    event.message = "too wide";
    EXPECT_EQ(FormatStatusEvent(event), "Warning: 'Blur'\n  with message: 'too wide'\n" + position);

    event.subject = "";
    EXPECT_EQ(FormatStatusEvent(event), "Warning: 'too wide'\n" + position);

    event.message = "";
    EXPECT_EQ(FormatStatusEvent(event), "Warning: ''\n" + position);

    event.subject = "Blur";
    EXPECT_EQ(FormatStatusEvent(event), "Warning: 'Blur'\n" + position);
}

std::vector<std::string>& Received() {
    static std::vector<std::string> received;
    return received;
}
void FirstHandler(const StatusEvent& event) {
    Received().push_back("first:" + event.message);
}
void SecondHandler(const StatusEvent& event) {
    Received().push_back("second:" + event.message);
}

// The handler list is process-wide and cannot shrink, so one test walks its whole life.
TEST(StatusEvents, HandlersAreCalledInOrderAndNullIsRefused) {
    LogCapture log;
    AddStatusEventHandler(&FirstHandler);
    AddStatusEventHandler(nullptr);
    ASSERT_EQ(Received(), std::vector<std::string>{"first:StatusEventHandler must not be null"});
    const std::vector<std::string> lines = log.Lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "Warning: 'StatusEventHandler must not be null'");
    EXPECT_NE(lines[1].find("in function 'AddStatusEventHandler'"), std::string::npos);

    Received().clear();
    log.Clear();
    AddStatusEventHandler(&SecondHandler);
    AddStatusEventHandler(&FirstHandler);
    SendStatusEvent(
        {.level = "Error", .subject = "s", .file = "f", .function = "g", .message = "m", .line = 1});
    EXPECT_EQ(Received(), (std::vector<std::string>{"first:m", "second:m", "first:m"}));
    EXPECT_EQ(log.Text(), "Error: 's'\n  with message: 'm'\n  at f:1 in function 'g'\n\n");
}

}  // namespace
}  // namespace Vantel

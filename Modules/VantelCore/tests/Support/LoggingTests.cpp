#include <gtest/gtest.h>

#include <cstddef>
#include <string>
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

constexpr std::size_t kGrownHandlers = 64;
void GrowingHandler(const StatusEvent&) {
    static bool grown = false;
    if (!grown) {
        grown = true;
        for (std::size_t i = 0; i < kGrownHandlers; ++i) {
            AddStatusEventHandler(&SecondHandler);
        }
    }
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

    // A handler that adds handlers while the event is sent (enough to move the list): those start with the
    // next event.
    Received().clear();
    AddStatusEventHandler(&GrowingHandler);
    AddStatusEventHandler(&FirstHandler);
    SendStatusEvent(
        {.level = "Info", .subject = "", .file = "f", .function = "g", .message = "a", .line = 1});
    EXPECT_EQ(Received(), (std::vector<std::string>{"first:a", "second:a", "first:a", "first:a"}));
    Received().clear();
    SendStatusEvent(
        {.level = "Info", .subject = "", .file = "f", .function = "g", .message = "b", .line = 1});
    EXPECT_EQ(Received().size(), 4u + kGrownHandlers);
}

}  // namespace
}  // namespace Vantel

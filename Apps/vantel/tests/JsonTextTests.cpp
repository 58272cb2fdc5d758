// The edit protocol's text writer: what it writes must read back as the document it was told to write.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include <nlohmann/json.hpp>

#include "Edit/JsonText.h"

namespace {

using nlohmann::json;
using VantelHost::JsonText;

TEST(JsonText, NestedContainersReadBackAsWritten) {
    JsonText out;
    out.BeginObject();
    out.Key("empty");
    out.BeginArray();
    out.EndArray();
    out.Key("rows");
    out.BeginArray();
    for (int row = 0; row < 3; ++row) {
        out.BeginObject();
        out.Key("index");
        out.Integer(row - 1);
        out.Key("cells");
        out.BeginArray();
        out.Number(0.1 * row);
        out.Boolean(row % 2 == 0);
        out.Null();
        out.EndArray();
        out.EndObject();
    }
    out.EndArray();
    out.Key("value");
    out.Value(json{{"a", {1, 2}}});
    out.EndObject();

    const json expected = {{"empty", json::array()},
                           {"rows",
                            {{{"index", -1}, {"cells", {0.0, true, nullptr}}},
                             {{"index", 0}, {"cells", {0.1, false, nullptr}}},
                             {{"index", 1}, {"cells", {0.2, true, nullptr}}}}},
                           {"value", {{"a", {1, 2}}}}};
    EXPECT_EQ(json::parse(out.Take()), expected);
}

TEST(JsonText, TextAndNumbersThatNeedCareStayReadable) {
    JsonText out;
    out.BeginArray();
    out.String("quote \" backslash \\ newline \n tab \t bell \x07");
    out.String("caf\xC3\xA9 \xE2\x86\x92");  // UTF-8 stays as it is
    out.String("bad \xFF byte");             // not UTF-8: replaced rather than failing the reply
    out.Number(std::numeric_limits<double>::quiet_NaN());
    out.Number(-std::numeric_limits<double>::infinity());
    out.Number(1e300);
    out.Number(0.1f);
    out.EndArray();

    const json read = json::parse(out.Take());
    ASSERT_EQ(read.size(), 7u);
    EXPECT_EQ(read[0], "quote \" backslash \\ newline \n tab \t bell \x07");
    EXPECT_EQ(read[1], "caf\xC3\xA9 \xE2\x86\x92");
    EXPECT_EQ(read[2], "bad \xEF\xBF\xBD byte");
    EXPECT_TRUE(read[3].is_null());
    EXPECT_TRUE(read[4].is_null());
    EXPECT_EQ(read[5].get<double>(), 1e300);
    EXPECT_EQ(read[6].get<float>(), 0.1f);  // the float's own value, exactly
}

}  // namespace

// The edit protocol's texts: what the writer writes must read back as the document it was told to write, and
// previews travel as standard base64.
#include <gtest/gtest.h>

#include <limits>

#include <nlohmann/json.hpp>

#include "Edit/JsonText.h"
#include "Edit/Preview.h"

namespace {

using nlohmann::json;

TEST(JsonText, WhatItWritesReadsBackAsWritten) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    VantelHost::JsonText out;
    out.BeginObject();
    out.Key("empty");
    out.BeginArray();
    out.EndArray();
    out.Key("rows");
    out.BeginArray();
    for (int row = 0; row < 2; ++row) {
        out.BeginObject();
        out.Key("index");
        out.Integer(row - 1);
        out.Key("cells");
        out.BeginArray();
        out.Number(0.1 * row);
        out.Boolean(row == 0);
        out.Null();
        out.EndArray();
        out.EndObject();
    }
    out.EndArray();
    out.Key("value");
    out.Value(json{{"a", {1, 2}}, {"b", "\xC3\xBC"}});
    out.Key("text");
    out.BeginArray();
    out.String("quote \" backslash \\ newline \n bell \x07 caf\xC3\xA9");  // UTF-8 stays as it is
    out.String("bad \xFF byte");  // not UTF-8: replaced rather than failing the reply
    out.EndArray();
    out.Key("numbers");
    out.BeginArray();
    for (const double number : {kNaN, -std::numeric_limits<double>::infinity(), 1e300, double{0.1f}}) {
        out.Number(number);
    }
    out.EndArray();
    out.EndObject();

    const json expected = {
        {"empty", json::array()},
        {"rows",
         {{{"index", -1}, {"cells", {0.0, true, nullptr}}},
          {{"index", 0}, {"cells", {0.1, false, nullptr}}}}},
        {"value", {{"a", {1, 2}}, {"b", "\xC3\xBC"}}},
        {"text", {"quote \" backslash \\ newline \n bell \x07 caf\xC3\xA9", "bad \xEF\xBF\xBD byte"}},
        {"numbers", {nullptr, nullptr, 1e300, double{0.1f}}}};  // JSON has no NaN or infinity
    const std::string text = out.Take();
    for (const char* kept : {"caf\xC3\xA9", "\"\xC3\xBC\""}) {
        EXPECT_NE(text.find(kept), std::string::npos) << kept;  // UTF-8 as it is, not escaped
    }
    EXPECT_EQ(json::parse(text), expected);
}

TEST(Base64, PadsToWholeGroupsAndTakesBytesUnsigned) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},        {"f", "Zg=="},        {"fo", "Zm8="},
        {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xff\xfe\xfd", "//79"}};
    for (const auto& [bytes, text] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(VantelHost::EncodeBase64(bytes), text);
    }
}

}  // namespace

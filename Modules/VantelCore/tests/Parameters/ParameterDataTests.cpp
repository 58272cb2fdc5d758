#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/ParameterData.h>

#include "Support/TestParameters.h"

namespace Vantel {
namespace {

using Floats = std::vector<double>;
using Ints = std::vector<std::int64_t>;
using Type = ParameterData::Type;
constexpr std::int64_t kInvalid = std::numeric_limits<std::int64_t>::min();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(ParameterData, TextReadsNumbersAfterLeadingTextUntilAForeignSeparator) {
    const std::tuple<std::string, Floats, Ints> rows[] = {
        {"  3.7 , -2e1,4", {3.7, -20, 4}, {3, -20, 4}},
        {"width 12", {12}, {12}},
        {"1, 2\t3", {1, 2, 3}, {1, 2, 3}},
        {"1\r\n2\v3\f4", {1, 2, 3, 4}, {1, 2, 3, 4}},  // lines as a Windows editor ends them
        {"1-2", {1, -2}, {1, -2}},
        {"+5", {5}, {5}},
        {"-.5e1 .25 1e", {-5, 0.25, 1}, {-5, 0, 1}},
        {"1;2", {1}, {1}},
        {"1,+5 x", {1}, {1}},
        {"abc", {}, {}},
        {"information 7", {7}, {7}},
        {"Nancy, banana 3", {3}, {3}},
        {"x -inf, INFINITY", {-kInf, kInf}, {kInvalid, kInvalid}},
        {"1inf", {1}, {1}},
        {"1e999 -1e999 1e-999", {kInf, -kInf, 0}, {kInvalid, kInvalid, 0}},
        {"1" + std::string(400, '0') + "e-50", {kInf}, {kInvalid}},
        {"0." + std::string(400, '0') + "1e50", {0}, {0}},
    };
    for (const auto& [text, floats, ints] : rows) {
        SCOPED_TRACE(text);
        const ParameterData data(text);
        EXPECT_EQ(data.GetFloats(), floats);
        EXPECT_EQ(data.GetInts(), ints);
        EXPECT_EQ(data.GetRowCount(), static_cast<int>(floats.size()));
    }
    EXPECT_TRUE(std::signbit(ParameterData("-1e-999").GetFloat(0)));
    const ParameterData nan("nan(7), -nan");
    EXPECT_TRUE(std::isnan(nan.GetFloat(0)) && std::isnan(nan.GetFloat(1)));
    EXPECT_EQ(nan.GetInts(), (Ints{kInvalid, kInvalid}));
}

TEST(ParameterData, NumericTextIsBuiltShortestAndReadsBack) {
    const std::tuple<ParameterData, std::string> rows[] = {
        {ParameterData(Floats{0.1, 2}), "0.1, 2"},
        {ParameterData(Floats{0.5, 1e20, -0.0, -kInf, 5e-324}), "0.5, 1e+20, -0, -inf, 5e-324"},
        {ParameterData(std::vector<float>{0.1f}), "0.10000000149011612"},
        {ParameterData(Floats{}), ""},
        {ParameterData(Ints{-3, 7, kInvalid}), "-3, 7, -9223372036854775808"},
        {ParameterData(Floats{1, 2}, 1, 2), ""},
    };
    for (const auto& [data, text] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(data.GetString(), text);
        EXPECT_EQ(data.GetString(), text);  // the kept text
        if (data.GetType() != Type::Matrix) {
            EXPECT_EQ(ParameterData(text).GetFloats(), data.GetFloats());
        }
    }
}

TEST(ParameterData, FloatsTruncateTowardZeroAndInvalidOnesGiveTheSmallestInt) {
    const ParameterData data(Floats{2.9, -2.9, -0.5, kNaN, 1e300, -1e300, 0x1p63, 0x1p63 - 1024, -0x1p63});
    EXPECT_EQ(data.GetInts(),
              (Ints{2, -2, 0, kInvalid, kInvalid, kInvalid, kInvalid, 9223372036854774784, kInvalid}));
    EXPECT_EQ(ParameterData(std::vector<float>{-7.99f}, 1, 1).GetInts(), Ints{-7});

    const ParameterData choice("Last", std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(choice.GetInt(0), std::numeric_limits<std::int64_t>::max());  // exact, unlike its float
    EXPECT_EQ(choice.GetFloats(), Floats{0x1p63});
}

TEST(ParameterData, MatrixIsColumnAfterColumnAndChecksOnlyTheFlatIndex) {
    Floats values(16);
    std::iota(values.begin(), values.end(), 1.0);
    const ParameterData m(values, 4, 4);
    EXPECT_EQ(m.GetColumnCount(), 4);
    EXPECT_EQ(ParameterData().GetColumnCount(), 0);
    EXPECT_EQ(m.GetFloat(1, 0), 5.0);
    EXPECT_EQ(m.GetFloat(3, 3), 16.0);
    EXPECT_EQ(m.GetFloat(0, 5), 6.0);
    EXPECT_EQ(m.GetFloat(4, 0), 0.0);
    EXPECT_EQ(m.GetFloat(std::uint64_t{1} << 62, 1), 0.0);  // would wrap around to index 1
    EXPECT_EQ(m.GetInt(16), 0);
    EXPECT_EQ(ParameterData(Floats{1, 2}, 3, 5).GetFloat(1, 0), 0.0);  // counts kept, not checked
}

TEST(ParameterData, EqualityNeedsTheSameKindThenComparesThatKindsForm) {
    const ParameterData nan(Floats{kNaN});
    EXPECT_NE(nan, nan);
    EXPECT_FALSE(ParameterData() != ParameterData());
    EXPECT_EQ(ParameterData(Floats{0.0}), ParameterData(Floats{-0.0}));
    EXPECT_NE(ParameterData(Floats{1}), ParameterData(Ints{1}));
    EXPECT_NE(ParameterData(Floats{1}), ParameterData(Floats{1}, 1, 1));
    EXPECT_NE(ParameterData(Floats{1, 2, 3, 4}, 2, 2), ParameterData(Floats{1, 2, 3, 4}, 4, 1));
    EXPECT_NE(ParameterData(Floats{1, 2, 3, 4}, 2, 2), ParameterData(Floats{1, 2, 3, 5}, 2, 2));
    EXPECT_NE(ParameterData("1, 2"), ParameterData("1,2"));
    EXPECT_NE(ParameterData("a", 1), ParameterData("a", 2));
    EXPECT_NE(ParameterData(std::string_view()), ParameterData());
    EXPECT_EQ(ParameterData(nullptr), ParameterData(nullptr));
    EXPECT_NE(ParameterData(nullptr), ParameterData());

    const ParameterData built(Ints{4});
    built.GetString();
    EXPECT_EQ(built, ParameterData(Ints{4}));  // the text cache is no part of the value
}

TEST(ParameterData, CopiesOwnTheirRecordAndOnlyMovingHandsOverEmptiness) {
    EXPECT_EQ(sizeof(ParameterData), sizeof(void*));
    const ParameterData source(Floats{0.25, 3});
    EXPECT_EQ(source.GetString(), "0.25, 3");
    const ParameterData copy(source);
    EXPECT_EQ(copy.GetString(), "0.25, 3");
    EXPECT_NE(&copy.GetString(), &source.GetString());

    ParameterData target(Floats{1, 2});
    target = ParameterData();  // moving the empty value empties the target
    EXPECT_EQ(target.GetType(), Type::Empty);
    target = source;
    const ParameterData empty;
    target = empty;  // copying it keeps the target's value
    EXPECT_EQ(target.GetFloats(), (Floats{0.25, 3}));

    ParameterData moved(std::move(target));
    EXPECT_EQ(moved.GetString(), "0.25, 3");
    EXPECT_EQ(target.GetType(), Type::Empty);  // NOLINT(bugprone-use-after-move): moves leave it empty
    EXPECT_EQ(&target.GetFloats(), &empty.GetFloats());
    EXPECT_EQ(&target.GetString(), &empty.GetString());
    EXPECT_EQ(empty.GetFloat(0), 0.0);
}

TEST(ParameterData, PointerShowsTheNameAndComparesByIdentityOfTheLivingObject) {
    auto blur = std::make_unique<Object>("Blur");
    Object twin("Blur");
    const ParameterData live{Ptr<Object>(blur.get())};
    EXPECT_EQ(live.GetString(), "Blur");  // a plain object shows its key
    EXPECT_EQ(live.GetPointer().Get(), blur.get());
    EXPECT_EQ(live, ParameterData(Ptr<Object>(blur.get())));
    EXPECT_NE(live, ParameterData(Ptr<Object>(&twin)));
    EXPECT_NE(live, ParameterData(nullptr));

    const Ptr<Object> weak(blur.get());
    blur.reset();
    EXPECT_EQ(live.GetPointer().Get(), nullptr);
    EXPECT_EQ(live.GetString(), "Blur");
    EXPECT_EQ(live, ParameterData(nullptr));
    const ParameterData dead(weak);
    EXPECT_EQ(dead.GetType(), Type::Pointer);
    EXPECT_EQ(dead.GetString(), "");

    // Operators and parameters show their own names, not their keys.
    Operator op;
    op.SetKey("Blur [k3x]");
    op.SetName("Soft Blur");
    Testing::NumberParameter radius(&op, "Radius");
    radius.SetName("Blur Radius");
    EXPECT_EQ(ParameterData(Ptr<Object>(&op)).GetString(), "Soft Blur");
    EXPECT_EQ(ParameterData(Ptr<Object>(&radius)).GetString(), "Blur Radius");
}

}  // namespace
}  // namespace Vantel

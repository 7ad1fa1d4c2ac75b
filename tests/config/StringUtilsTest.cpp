#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "LogCapture.h"
#include "config/StringUtils.h"

namespace TesselFX {
namespace {

using test::LogCapture;
using Strings = std::vector<std::string>;

TEST(StringUtils, SplitKeepsInnerEmptyTokensButNoTrailingOne) {
    EXPECT_EQ(Split("a,b", ','), (Strings{"a", "b"}));
    EXPECT_EQ(Split("a,,b", ','), (Strings{"a", "", "b"}));
    EXPECT_EQ(Split("a,", ','), (Strings{"a"}));
    EXPECT_EQ(Split(",a", ','), (Strings{"", "a"}));
    EXPECT_EQ(Split(",", ','), (Strings{""}));
    EXPECT_EQ(Split("", ','), Strings{});
    EXPECT_EQ(Split("a|b:c", ':'), (Strings{"a|b", "c"}));
    EXPECT_EQ(RemoveWhiteSpace(" a\tb\nc\vd\fe\rf g "), "abcdefg");
    EXPECT_EQ(CutAtFirst("PRESET:a:b", ':'),
              std::make_pair(std::string("PRESET"), std::string("a:b")));
    EXPECT_EQ(CutAtFirst("OM", ':'), std::make_pair(std::string("OM"), std::string()));
    EXPECT_EQ(ToSubtypeMask("0|3|33"), 0x0Bu);
    EXPECT_EQ(ToSubtypeMask(""), 0u);
    EXPECT_THROW(ToSubtypeMask("1||2"), std::invalid_argument);
}

TEST(StringUtils, ToIntPairAcceptsAndRejects) {
    LogCapture capture;
    int32_t a = 0, b = 0;
    const char* text = "x[3:4]y";
    EXPECT_EQ(ToIntPair(text, a, b), text + 6);
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(3, 4));
    EXPECT_TRUE(capture.Has(1, "ToIntPair [3:4]y\n "));

    const char* spaced = "[ -3: +4]";
    EXPECT_EQ(ToIntPair(spaced, a, b), spaced + 9);
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(-3, 4));
    EXPECT_TRUE(capture.ErrorTexts().empty());

    for (const char* bad : {"[3:4 ]", "[3 :4]", "[3:4", "[3:]", "[:4]", "[3,4]", "[", "[3:4)"}) {
        capture.Clear();
        EXPECT_EQ(ToIntPair(bad, a, b), nullptr) << bad;
        EXPECT_EQ(capture.ErrorTexts(), Strings{"ToIntPair: wrong format\n"}) << bad;
    }
    capture.Clear();
    EXPECT_EQ(ToIntPair("3:4]", a, b), nullptr);
    EXPECT_EQ(ToIntPair(nullptr, a, b), nullptr);
    EXPECT_EQ(capture.ErrorTexts(), (Strings{"ToIntPair: wrong format, missing '['\n",
                                             "ToIntPair: wrong format, missing '['\n"}));
}

TEST(StringUtils, ToIntTripleAcceptsAndRejects) {
    LogCapture capture;
    int32_t a = 0, b = 0, c = 9;
    const char* text = "id[1:-2:30]rest";
    EXPECT_EQ(ToIntTriple(text, a, b, c), text + 11);
    EXPECT_EQ(std::make_tuple(a, b, c), std::make_tuple(1, -2, 30));

    c = 9;
    EXPECT_EQ(ToIntTriple("[1:2]", a, b, c), nullptr);
    EXPECT_EQ(c, 0);  // cleared before parsing
    EXPECT_EQ(ToIntTriple("[1:2:3 ]", a, b, c), nullptr);
    EXPECT_EQ(ToIntTriple("1:2:3", a, b, c), nullptr);
    EXPECT_EQ(capture.ErrorTexts(),
              (Strings{"ToIntTriple: wrong format\n", "ToIntTriple: wrong format\n",
                       "ToIntTriple: wrong format, missing '['\n"}));
}

TEST(StringUtils, ToParametersArrayAcceptsAndRejects) {
    LogCapture capture;
    std::vector<int32_t> ids;
    std::vector<double> values;
    const char* text = "p[1:0.5,2:1]z";
    EXPECT_EQ(ToParametersArray(text, ids, values), text + 12);
    EXPECT_EQ(ids, (std::vector<int32_t>{1, 2}));
    EXPECT_EQ(values, (std::vector<double>{0.5, 1.0}));
    EXPECT_TRUE(capture.Has(1, "1:0.500000"));
    EXPECT_TRUE(capture.Has(1, "2:1.000000"));

    ids.clear();
    values.clear();
    EXPECT_EQ(ToParametersArray("[7:-1e3, 8: 2.5]", ids, values) != nullptr, true);
    EXPECT_EQ(ids, (std::vector<int32_t>{7, 8}));
    EXPECT_EQ(values, (std::vector<double>{-1000.0, 2.5}));

    // Output gathered before the failure stays.
    ids.clear();
    values.clear();
    capture.Clear();
    EXPECT_EQ(ToParametersArray("[1:0.5,2:x]", ids, values), nullptr);
    EXPECT_EQ(ids, std::vector<int32_t>{1});
    EXPECT_EQ(ToParametersArray("[]", ids, values), nullptr);
    EXPECT_EQ(ToParametersArray("[3:1;4:2]", ids, values), nullptr);
    EXPECT_EQ(ToParametersArray("[3:1,", ids, values), nullptr);
    EXPECT_EQ(ToParametersArray("[3:1", ids, values), nullptr);
    EXPECT_EQ(ToParametersArray("3:1]", ids, values), nullptr);
    EXPECT_EQ(ids, (std::vector<int32_t>{1, 3, 3, 3}));
    EXPECT_EQ(capture.ErrorTexts(),
              (Strings{"ToParametersArray: wrong format\n", "ToParametersArray: wrong format\n",
                       "ToParametersArray: wrong format\n", "ToParametersArray: wrong format\n",
                       "ToParametersArray: wrong format\n",
                       "ToParametersArray: wrong format, missing '['\n"}));
}

TEST(StringUtils, ToTagAndParametersAndFromTag) {
    LogCapture capture;
    int32_t first = 0, second = 0;
    std::vector<int32_t> ids;
    std::vector<double> values;
    const char* text = "[1:2][3:0.5,4:1]!";
    EXPECT_EQ(ToTagAndParameters(text, first, second, ids, values), text + 16);
    EXPECT_EQ(std::make_pair(first, second), std::make_pair(1, 2));
    EXPECT_EQ(ids, (std::vector<int32_t>{3, 4}));
    EXPECT_EQ(values, (std::vector<double>{0.5, 1.0}));
    EXPECT_EQ(ToTagAndParameters("[1:2]", first, second, ids, values), nullptr);
    EXPECT_EQ(ToTagAndParameters("[1;2][3:1]", first, second, ids, values), nullptr);
    EXPECT_EQ(capture.ErrorTexts(), (Strings{"ToParametersArray: wrong format, missing '['\n",
                                             "ToIntPair: wrong format\n"}));

    capture.Clear();
    int32_t a = 0, b = 0;
    uint32_t c = 0, d = 0;
    const char* tag = "t[12:-3][0xaBc,0XFF]x";
    EXPECT_EQ(FromTag(tag, a, b, c, d), nullptr);  // "0X" is not the literal "0x"
    const char* good = "t[12:-3][0xaBc,0xFFFFFFFF]x";
    EXPECT_EQ(FromTag(good, a, b, c, d), good + 26);
    EXPECT_EQ(std::make_tuple(a, b, c, d), std::make_tuple(12, -3, 0xABCu, 0xFFFFFFFFu));
    EXPECT_EQ(FromTag("[1:2][0x1,0x2", a, b, c, d), nullptr);
    EXPECT_EQ(FromTag("[1:2][1,2]", a, b, c, d), nullptr);
    EXPECT_EQ(FromTag("[1:2] [0x1,0x2]", a, b, c, d), nullptr);
    EXPECT_EQ(FromTag("no bracket", a, b, c, d), nullptr);
    EXPECT_EQ(capture.ErrorTexts(), (Strings{"FromTag: wrong format\n", "FromTag: wrong format\n",
                                             "FromTag: wrong format\n", "FromTag: wrong format\n",
                                             "FromTag: wrong format, missing '['\n"}));
}

TEST(StringUtils, BracketParsersSurviveEveryTruncation) {
    const std::string full = "[12:-3][0xaBc,0x1]";
    const std::string params = "[1:2][3:0.5,4:1,5:-2e-3]";
    LogCapture capture(3);
    for (size_t length = 0; length <= params.size(); ++length) {
        int32_t a = 0, b = 0, c = 0;
        uint32_t x = 0, y = 0;
        std::vector<int32_t> ids;
        std::vector<double> values;
        const std::string cut = params.substr(0, length);
        const bool whole = length == params.size();
        EXPECT_EQ(ToTagAndParameters(cut.c_str(), a, b, ids, values) != nullptr, whole) << cut;
        const std::string tag = full.substr(0, std::min(length, full.size()));
        EXPECT_EQ(FromTag(tag.c_str(), a, b, x, y) != nullptr, tag == full) << tag;
        EXPECT_EQ(ToIntTriple(cut.c_str(), a, b, c), nullptr);
    }
}

}  // namespace
}  // namespace TesselFX

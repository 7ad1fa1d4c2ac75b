#include <gtest/gtest.h>

#include "LogCapture.h"
#include "PresetTestData.h"
#include "preset/PresetUtils.h"

namespace TesselFX {
namespace {

using Parameters = std::map<unsigned int, double>;

TEST(PresetUtils, ParameterMapArithmetic) {
    const Parameters current{{1, 1.0}, {2, 2.0}, {3, 3.0}};
    EXPECT_EQ(PresetUtils::GetChangedParameters(current, {{1, 1.0}, {2, 2.5}, {9, 9.0}}),
              (Parameters{{2, 2.0}, {3, 3.0}}));
    EXPECT_TRUE(PresetUtils::GetChangedParameters(current, current).empty());
    EXPECT_EQ(PresetUtils::GetChangedParameters(current, {}), current);
    EXPECT_EQ(PresetUtils::GetChangedParameters({{1, 0.1 + 0.2}}, {{1, 0.3}}).size(), 1u);

    Parameters target{{1, 0.0}, {5, 5.0}};
    PresetUtils::MergeParameters(target, {{1, 1.0}, {2, 2.0}});
    EXPECT_EQ(target, (Parameters{{1, 1.0}, {2, 2.0}, {5, 5.0}}));
    PresetUtils::MergeParameters(target, {});
    EXPECT_EQ(target.size(), 3u);

    const Parameters five{{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}};
    const auto parts = PresetUtils::SplitParameters(five, 2);
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_EQ(parts[0], (Parameters{{1, 1}, {2, 2}}));
    EXPECT_EQ(parts[2], (Parameters{{5, 5}}));
    // A full last map ends the split; only an empty input gives an empty map.
    const auto four = PresetUtils::SplitParameters({{1, 1}, {2, 2}, {3, 3}, {4, 4}}, 2);
    EXPECT_EQ(four, (std::vector<Parameters>{{{1, 1}, {2, 2}}, {{3, 3}, {4, 4}}}));
    const auto none = PresetUtils::SplitParameters({}, 2);
    ASSERT_EQ(none.size(), 1u);
    EXPECT_TRUE(none[0].empty());
}

LinkLawEntry LawOn(unsigned int target, std::vector<float> targets) {
    LinkLawEntry entry;
    entry.SourceControlId = 0;
    entry.MasterControlId = 2800;
    entry.TargetParamId = target;
    entry.targetValues = std::move(targets);
    entry.masterValues.resize(entry.targetValues.size());
    return entry;
}

TEST(PresetUtils, ComparisonReports) {
    EXPECT_EQ(PresetUtils::GetComparisonReportPipe({}, {}, {}, {}),
              "ZBAP|Value in Device|LinkLaw in Device|Value in ZPS|LinkLaw in ZPS|\n");
    const std::vector<LinkLawEntry> device{LawOn(2, {3.0f, 1.0f, 2.0f}), LawOn(2, {9.0f}),
                                           LawOn(3, {})};
    EXPECT_EQ(PresetUtils::GetComparisonReportComma({{1, 1.5}, {2, 2.0}, {3, -1.0}}, device,
                                                    {{1, 1.5}, {4, 0.25}}, {LawOn(4, {0.5f})}),
              "ZBAP,Value in Device,LinkLaw in Device,Value in ZPS,LinkLaw in ZPS,\n"
              "1,1.500000, ,1.500000, ,\n"
              "2,2.000000,1.000000~3.000000, , ,\n"
              "3,-1.000000,No points, , ,\n"
              "4, , ,0.250000,0.500000~0.500000,\n");
}

// A system file of one pair (1,2) whose base has parameter 10 = 1.5, 2821 = 1 and a law
// on target 200 (source 1, one point giving 7), and whose sub preset 1 has 10 = 4.
std::vector<char> SmallSystemFile() {
    using test::B;
    std::vector<char> file = {'B', 'P', 'B', 'Z', 0, 0, 0, 0, B(0x83), 0, 0, 0, 4, 2, 0,
                              // Base: 2 + 96 bytes, three items.
                              96, 0, 1, 2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 1, 'B', 0, 10, 0, 0, 8, 0,
                              0, 0, 0, 0, 0, 0, B(0xF8), 0x3F, 5, 11, 0, 8, 0, 0, 0, 0, 0, 0, 0,
                              B(0xF0), 0x3F, 1, 0, 3, 50, 0};
    file = test::Concat(file, test::LawOnTarget200());
    return test::Concat(file, {// Sub preset 1: 2 + 28 bytes, one item.
                               28,  0, 1,  2, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0,    1,
                               'S', 0, 10, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0x10, 0x40});
}

TEST(PresetUtils, ReadsParametersFromABuffer) {
    test::LogCapture capture;
    Parameters parameters;
    std::vector<char> laws;
    ASSERT_TRUE(
        PresetUtils::GetParametersFromZpsBuffer(SmallSystemFile(), 1, 2, 0, {}, parameters, laws));
    EXPECT_EQ(parameters, (Parameters{{10, 1.5}, {2821, 1.0}}));
    EXPECT_EQ(laws, test::LawOnTarget200());
    ASSERT_TRUE(PresetUtils::GetParametersFromZpsBuffer(SmallSystemFile(), 1, 2, 3, {2821},
                                                        parameters, laws));
    EXPECT_EQ(parameters, (Parameters{{10, 4.0}}));
    EXPECT_FALSE(
        PresetUtils::GetParametersFromZpsBuffer(SmallSystemFile(), 1, 3, 0, {}, parameters, laws));
    EXPECT_FALSE(PresetUtils::GetParametersFromZpsBuffer({'x'}, 1, 2, 0, {}, parameters, laws));
}

}  // namespace
}  // namespace TesselFX

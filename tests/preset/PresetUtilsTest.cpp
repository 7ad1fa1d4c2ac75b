#include <gtest/gtest.h>

#include "LogCapture.h"
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

}  // namespace
}  // namespace TesselFX

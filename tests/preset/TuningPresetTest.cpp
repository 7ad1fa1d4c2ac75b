#include <gtest/gtest.h>

#include <stdexcept>

#include "LogCapture.h"
#include "PresetTestData.h"
#include "preset/TuningPreset.h"

namespace TesselFX {
namespace {

using test::LogCapture;
using test::Value;
using Parameters = std::map<unsigned int, double>;

const char* const kDisabled = "TuningPreset::UpdateLinkLawsState DISABLED";
const char* const kActive = "TuningPreset::UpdateLinkLawsState ACTIVE";
const char* const kSimulation = "TuningPreset::UpdateLinkLawsState SIMULATION";
const char* const kDeactivate = "TuningPreset::DeactivateLinkLaws";
const char* const kMerge = "TuningPreset::MergeLinkLawsParamsToBase";

std::shared_ptr<TuningPreset> MakeTuningPreset() {
    return std::make_shared<TuningPreset>(std::make_shared<CLinkLawEntrySerializer>(),
                                          std::make_shared<LinkLaws>());
}

// Base {7: 2, 100: 1} and the law of source 0 on target 100 (target = source / 10), with
// source 0 at 50: the law gives 5 and master parameter 2800 mirrors 50.
struct Fixture {
    Fixture() {
        preset->SetParameterArray(Parameters{{7, 2.0}, {100, 1.0}});
        preset->SetChunk(ZBAC_LINKLAWS, test::LawOnTarget100());
        preset->SetLinkLawValue(0, 50.0);
    }
    std::shared_ptr<TuningPreset> preset = MakeTuningPreset();
};

TEST(TuningPreset, StatesFollowTheTwoSwitchesWithTheirLogs) {
    LogCapture capture;
    Fixture f;
    EXPECT_EQ(capture.Texts(1), (std::vector<std::string>{kDisabled, kDisabled}));
    EXPECT_EQ(f.preset->GetLinkLawsState(), TuningPreset::DISABLED);
    EXPECT_EQ(f.preset->GetAllParameters(), (Parameters{{7, 2.0}, {100, 1.0}}));

    // Entering ACTIVE folds nothing: reads show base, master and target values.
    capture.Clear();
    f.preset->SetParameter(2821, 1.0);
    EXPECT_EQ(capture.Texts(1), std::vector<std::string>{kActive});
    EXPECT_EQ(f.preset->GetLinkLawsState(), TuningPreset::ACTIVE);
    EXPECT_TRUE(f.preset->IsParametersChanged());
    EXPECT_EQ(f.preset->GetAllParameters(),
              (Parameters{{7, 2.0}, {100, 5.0}, {2800, 50.0}, {2821, 1.0}}));
    EXPECT_FALSE(f.preset->IsParametersChanged());
    f.preset->SetLinkLawValue(0, 20.0);
    EXPECT_EQ(Value(f.preset, 100), 2.0);

    // Staying ACTIVE folds nothing either; writing the target keeps the law on top.
    capture.Clear();
    f.preset->SetParameterArray(Parameters{{2821, 1.0}, {100, 9.0}});
    EXPECT_EQ(capture.Texts(1), std::vector<std::string>{kActive});
    EXPECT_EQ(Value(f.preset, 100), 2.0);

    // SIMULATION folds the results of the moment into the base, then reads see the base only.
    capture.Clear();
    f.preset->SetParameter(2820, 1.0);
    EXPECT_EQ(capture.Texts(1), (std::vector<std::string>{kSimulation, kDeactivate, kMerge}));
    EXPECT_EQ(f.preset->GetLinkLawsState(), TuningPreset::SIMULATION);
    f.preset->SetLinkLawValue(0, 80.0);
    EXPECT_EQ(f.preset->GetAllParameters(),
              (Parameters{{7, 2.0}, {100, 2.0}, {2800, 20.0}, {2820, 1.0}, {2821, 1.0}}));
    f.preset->SetParameter(100, 3.0);
    EXPECT_EQ(Value(f.preset, 100), 3.0);

    // Back to ACTIVE, then 2821 at 0.0 folds the law's values: reads keep them.
    f.preset->SetParameter(2820, 0.0);
    EXPECT_EQ(Value(f.preset, 100), 8.0);
    capture.Clear();
    f.preset->SetParameter(2821, 0.0);
    EXPECT_EQ(capture.Texts(1), (std::vector<std::string>{kDisabled, kDeactivate, kMerge}));
    EXPECT_EQ(f.preset->GetLinkLawsState(), TuningPreset::DISABLED);
    f.preset->SetLinkLawValue(0, 10.0);
    EXPECT_EQ(f.preset->GetAllParameters(),
              (Parameters{{7, 2.0}, {100, 8.0}, {2800, 80.0}, {2820, 0.0}, {2821, 0.0}}));

    // Simulation alone is no state: with 2821 off it stays DISABLED, without a fold.
    capture.Clear();
    f.preset->SetParameter(2820, 1.0);
    EXPECT_EQ(capture.Texts(1), std::vector<std::string>{kDisabled});
    // DISABLED to SIMULATION folds what the laws compute now, source 0 at 10.
    f.preset->SetParameter(2821, 1.0);
    EXPECT_EQ(f.preset->GetLinkLawsState(), TuningPreset::SIMULATION);
    EXPECT_EQ(Value(f.preset, 100), 1.0);
    EXPECT_EQ(Value(f.preset, 2800), 10.0);
}

TEST(TuningPreset, ForcedStatesFoldUnlessActive) {
    Fixture f;
    f.preset->SetLinkLawsState(TuningPreset::ACTIVE);
    EXPECT_EQ(Value(f.preset, 100), 5.0);
    LogCapture capture;
    f.preset->SetLinkLawsState(TuningPreset::SIMULATION);
    EXPECT_EQ(capture.Texts(1), (std::vector<std::string>{kDeactivate, kMerge}));
    EXPECT_EQ(Value(f.preset, 100), 5.0);

    // Only the switches move the state; the values are not stored.
    auto other = MakeTuningPreset();
    other->UpdateLinkLawsFromParameters(Parameters{{2821, 1.0}, {5, 1.0}});
    EXPECT_EQ(other->GetLinkLawsState(), TuningPreset::ACTIVE);
    EXPECT_TRUE(other->GetAllParameters().empty());
    other->SetParameter(5, 1.0);
    other->RefreshParameters();
    EXPECT_FALSE(other->IsParametersChanged());
    EXPECT_EQ(other->GetAllParameters(), (Parameters{{5, 1.0}}));
}

TEST(TuningPreset, ArrayReadsAndWrites) {
    Fixture f;
    LogCapture capture;
    std::vector<double> values{-1.0, -1.0, -1.0};
    EXPECT_TRUE(f.preset->GetParameterArray({100, 9, 7}, values, false));
    EXPECT_EQ(values, (std::vector<double>{1.0, -1.0, 2.0}));
    EXPECT_EQ(capture.Texts(3),
              std::vector<std::string>{"GetParameterArray: Could not find parameter 9"});
    EXPECT_TRUE(capture.Texts(4).empty());

    EXPECT_FALSE(f.preset->GetParameterArray({100, 9}, values, true));
    EXPECT_EQ(values, (std::vector<double>{1.0, -1.0}));
    EXPECT_TRUE(capture.Has(4,
                            "GetParameterArray mustFindAll 1 bFoundAllParameters 0 "
                            "bAtLeastOneFound 1 ret False"));

    // No ids: nothing is found, yet all of nothing is.
    capture.Clear();
    EXPECT_FALSE(f.preset->GetParameterArray({}, values, false));
    EXPECT_TRUE(values.empty());
    EXPECT_TRUE(capture.Has(4,
                            "GetParameterArray mustFindAll 0 bFoundAllParameters 1 "
                            "bAtLeastOneFound 0 ret False"));
    EXPECT_TRUE(f.preset->GetParameterArray({}, values, true));

    std::vector<unsigned int> ids;
    EXPECT_TRUE(f.preset->GetAllParameters(ids, values));
    EXPECT_EQ(ids, (std::vector<unsigned int>{7, 100}));
    EXPECT_EQ(values, (std::vector<double>{2.0, 1.0}));

    // A short value list throws before anything is stored; a long one is cut.
    EXPECT_THROW(
        f.preset->SetParameterArray(std::vector<unsigned int>{2821, 8}, std::vector<double>{1.0}),
        std::out_of_range);
    EXPECT_EQ(f.preset->GetLinkLawsState(), TuningPreset::DISABLED);
    EXPECT_EQ(f.preset->GetAllParameters(), (Parameters{{7, 2.0}, {100, 1.0}}));
    f.preset->SetParameterArray(std::vector<unsigned int>{8}, std::vector<double>{4.0, 5.0});
    EXPECT_EQ(f.preset->GetAllParameters(), (Parameters{{7, 2.0}, {8, 4.0}, {100, 1.0}}));
}

TEST(TuningPreset, ChunksAndSources) {
    Fixture f;
    f.preset->SetParameter(2821, 1.0);
    f.preset->RefreshParameters();

    // Another index is stored as it is and changes no parameter.
    const std::vector<char> other{1, 2, 3};
    f.preset->SetChunk(4, other);
    EXPECT_FALSE(f.preset->IsParametersChanged());
    std::vector<char> data;
    EXPECT_TRUE(f.preset->GetChunk(4, data));
    EXPECT_EQ(data, other);
    EXPECT_FALSE(f.preset->GetChunk(2, data));
    EXPECT_EQ(f.preset->GetChunkIndices(), (std::vector<unsigned int>{1, 4}));

    // Chunk 1 replaces the laws: the marker wipes the law on 100, the law on 200 (one point,
    // 7) needs source 1.
    const std::vector<char> laws = test::Concat(
        test::Concat(test::LawOnTarget100(), test::ClearingMarker()), test::LawOnTarget200());
    f.preset->SetChunk(ZBAC_LINKLAWS, laws);
    EXPECT_TRUE(f.preset->IsParametersChanged());
    EXPECT_EQ(f.preset->GetLinkLawEntries().size(), 3u);
    EXPECT_EQ(f.preset->GetAllChunks(),
              (std::map<unsigned int, std::vector<char>>{{1, laws}, {4, other}}));
    EXPECT_EQ(Value(f.preset, 100), 1.0);
    EXPECT_EQ(Value(f.preset, 200), -1.0);
    EXPECT_TRUE(f.preset->SetLinkLawValue(1, 0.25));
    EXPECT_EQ(Value(f.preset, 200), 7.0);
    EXPECT_EQ(Value(f.preset, 2801), 0.25);

    // A source outside 0 to 4 changes nothing and still answers true.
    f.preset->RefreshParameters();
    const Parameters before = f.preset->GetAllParameters();
    EXPECT_TRUE(f.preset->SetLinkLawValue(5, 3.0));
    EXPECT_TRUE(f.preset->IsParametersChanged());
    EXPECT_EQ(f.preset->GetAllParameters(), before);

    // Clearing the source drops the law's result and its master parameter.
    EXPECT_TRUE(f.preset->ClearLinkLawSource(1));
    EXPECT_EQ(Value(f.preset, 200), -1.0);
    EXPECT_EQ(Value(f.preset, 2801), -1.0);

    // Disabled link laws leave the stored chunk as it was.
    f.preset->SetParameter(2821, 0.0);
    EXPECT_TRUE(f.preset->GetChunk(ZBAC_LINKLAWS, data));
    EXPECT_EQ(data, laws);
}

TEST(TuningPreset, StartsFromTheHandlesViewWithoutLinkLaws) {
    PresetMap system;
    test::AddPreset(system, 1, 1, 0, 0, {{10, 1.0}, {100, 1.0}, {2821, 1.0}},
                    test::LawOnTarget100());
    auto set = test::MakeSet(system);
    auto handle = set->RequestPresetHandle(1, 1);
    ASSERT_TRUE(handle);
    handle->SetLinkLawValue(0, 30.0);
    ASSERT_EQ(handle->GetAllParameters(),
              (Parameters{{10, 1.0}, {100, 3.0}, {2800, 30.0}, {2821, 1.0}}));

    auto preset = MakeTuningPreset();
    preset->InitFromPresetHandle(nullptr);
    EXPECT_TRUE(preset->GetAllParameters().empty());
    EXPECT_TRUE(preset->GetChunkIndices().empty());

    preset->InitFromPresetHandle(handle);
    EXPECT_EQ(preset->GetLinkLawsState(), TuningPreset::ACTIVE);
    EXPECT_EQ(preset->GetAllParameters(), handle->GetAllParameters());
    std::vector<char> data;
    EXPECT_TRUE(preset->GetChunk(ZBAC_LINKLAWS, data));
    EXPECT_EQ(data, test::LawOnTarget100());

    // Its own laws: the handle does not see the tool's source value, nor the reverse.
    preset->SetLinkLawValue(0, 60.0);
    EXPECT_EQ(Value(preset, 100), 6.0);
    EXPECT_EQ(handle->GetAllParameters().at(100), 3.0);
    preset->SetParameter(2821, 0.0);
    EXPECT_EQ(Value(preset, 100), 6.0);
    EXPECT_EQ(handle->GetAllParameters().at(100), 3.0);
}

}  // namespace
}  // namespace TesselFX

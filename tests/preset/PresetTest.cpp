#include <gtest/gtest.h>

#include <vector>

#include "LogCapture.h"
#include "PresetTestData.h"
#include "preset/PresetFactory.h"
#include "preset/SuperPreset.h"
#include "preset/UserPreset.h"

namespace TesselFX {
namespace {

using test::Concat;
using test::LogCapture;

// One law: version 1, master 2800, source 0, target 100, "Linear", one point (0, 5), no
// trailing floats set. 50 bytes.
const std::vector<char> kOneLaw = {
    0x32, 0x00,          0x00, 0x00, 0x01, 0x00, 0x00, 0x00, test::B(0xF0), 0x0A, 0x00, 0x00, 0x00,
    0x00, 0x00,          0x00, 0x64, 0x00, 0x00, 0x00, 0x06, 0x00,          0x00, 0x00, 'L',  'i',
    'n',  'e',           'a',  'r',  0x01, 0x00, 0x00, 0x00, 0x00,          0x00, 0x00, 0x00, 0x00,
    0x00, test::B(0xA0), 0x40, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,          0x00, 0x00};
const std::vector<char> kMarker = test::ClearingMarker();

TEST(Preset, ParametersChunksAndIdentity) {
    LogCapture capture;
    PresetFactory factory;
    auto preset = factory.Create(1, 2, 4, "Music", "loud", 1, 3, false);
    EXPECT_EQ(dynamic_cast<UserPreset*>(preset.get()), nullptr);
    EXPECT_TRUE(preset->IsDefaultSoundMode());  // flag bit 0
    EXPECT_TRUE(preset->IsEmpty());

    preset->SetParameterArray({5, 3}, {0.5, 0.3});
    preset->SetParameterArray({}, {9.0});
    preset->SetParameterArray(std::map<unsigned int, double>{{3, 3.5}, {8, 8.0}});
    preset->SetParameter(1, 1.0);
    std::vector<double> values{7.0};
    EXPECT_FALSE(preset->GetParameterArray({3, 4, 8}, values));
    EXPECT_EQ(values, (std::vector<double>{3.5, 0.0, 8.0}));
    EXPECT_TRUE(preset->GetParameterArray({}, values));
    std::vector<unsigned int> ids;
    EXPECT_TRUE(preset->GetAllParameters(ids, values));
    EXPECT_EQ(ids, (std::vector<unsigned int>{1, 3, 5, 8}));
    EXPECT_EQ(values, (std::vector<double>{1.0, 3.5, 0.5, 8.0}));
    double value = -1.0;
    EXPECT_FALSE(preset->GetParameter(4, value));
    EXPECT_EQ(value, -1.0);
    preset->ClearParameterArray({1, 8, 99});
    EXPECT_EQ(capture.Texts(1), (std::vector<std::string>{"3 3.500000", "5 0.500000"}));
    EXPECT_EQ(capture.Lines().back().tag, "TESSEL_LOG_Preset");
    preset->ClearParameter(3);
    EXPECT_EQ(preset->GetParameterCount(), 1u);

    preset->SetChunk(2, {1, 2});
    EXPECT_TRUE(preset->GetLinkLawEntries().empty());
    preset->SetChunk(1, kOneLaw);
    ASSERT_EQ(preset->GetLinkLawEntries().size(), 1u);
    EXPECT_EQ(preset->GetLinkLawEntries()[0].targetValues, std::vector<float>{5.0f});
    std::vector<char> chunk;
    EXPECT_TRUE(preset->GetChunk(1, chunk));
    EXPECT_EQ(chunk, kOneLaw);
    EXPECT_EQ(preset->GetChunkIndices(), (std::vector<unsigned int>{1, 2}));
    EXPECT_EQ(preset->GetChunkCount(), 2u);

    auto clone = preset->Clone();
    EXPECT_EQ(clone->GetAllParameters(), preset->GetAllParameters());
    EXPECT_EQ(clone->GetAllChunks(), preset->GetAllChunks());
    EXPECT_EQ(clone->GetName(), "Music");
    EXPECT_EQ(clone->GetLinkLawEntries().size(), 1u);
    clone->SetParameter(5, 9.0);
    EXPECT_TRUE(preset->GetParameter(5, value));
    EXPECT_EQ(value, 0.5);

    // ClearAll keeps the decoded laws; the preset then counts as empty.
    preset->ClearAll();
    EXPECT_FALSE(preset->GetChunk(1, chunk));
    EXPECT_EQ(preset->GetLinkLawEntries().size(), 1u);
    EXPECT_TRUE(preset->IsEmpty());
    clone->ClearAllChunks();
    EXPECT_EQ(clone->GetLinkLawEntries().size(), 1u);
    clone->SetChunk(1, kOneLaw);
    clone->ClearChunk(1);
    EXPECT_TRUE(clone->GetLinkLawEntries().empty());
}

TEST(UserPreset, PutsTheMarkerInFrontOfItsLaws) {
    LogCapture capture;
    PresetFactory factory;
    auto user = factory.Create(1, 2, 0, "U", "", 0, 0, true);
    ASSERT_NE(dynamic_cast<UserPreset*>(user.get()), nullptr);
    user->SetChunk(2, {9});
    EXPECT_TRUE(user->GetLinkLawEntries().empty());

    // The marker goes in front of the law, and the former bytes stay behind both.
    user->SetChunk(1, kOneLaw);
    std::vector<char> chunk;
    ASSERT_TRUE(user->GetChunk(1, chunk));
    EXPECT_EQ(chunk, Concat(Concat(kMarker, kOneLaw), kOneLaw));
    std::vector<LinkLawEntry> entries = user->GetLinkLawEntries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0], UserPreset::ClearingMarker());
    EXPECT_EQ(entries[0].size, 28u);
    EXPECT_EQ(entries[1].TargetParamId, 100u);

    // A chunk that starts with the marker is kept as it is; so is a clone's.
    user->SetChunk(1, kMarker);
    ASSERT_TRUE(user->GetChunk(1, chunk));
    EXPECT_EQ(chunk, kMarker);
    user->SetChunk(1, Concat(kMarker, kOneLaw));
    auto clone = user->Clone();
    ASSERT_NE(dynamic_cast<UserPreset*>(clone.get()), nullptr);
    ASSERT_TRUE(clone->GetChunk(1, chunk));
    EXPECT_EQ(chunk, Concat(kMarker, kOneLaw));
    EXPECT_EQ(clone->GetLinkLawEntries().size(), 2u);

    // Bytes that decode to nothing: the marker alone in front of them.
    user->SetChunk(1, {0x01, 0x02});
    ASSERT_TRUE(user->GetChunk(1, chunk));
    EXPECT_EQ(chunk, Concat(kMarker, {0x01, 0x02}));
    EXPECT_EQ(user->GetLinkLawEntries().size(), 1u);
}

TEST(Preset, DumpTexts) {
    PresetFactory factory;
    auto preset = factory.Create(3, 4, 2, "Movie", "night", 1, 0, false);
    preset->SetParameter(10, 1.0);
    preset->SetChunk(1, kOneLaw);
    LogCapture capture;
    preset->Dump();
    char self[64];
    std::snprintf(self, sizeof(self), "Flags [1], SubTypeMask [0x2], this [%p]",
                  static_cast<const void*>(preset.get()));
    EXPECT_EQ(
        capture.Texts(2),
        (std::vector<std::string>{"---------------------Preset::Dump---------------------",
                                  "Showing preset [Movie] for OM [3] and SM[4]", "Remarks [night]",
                                  self, "Parameters, size 1", "LinkLawEntries, size 1",
                                  "SourceControlId 0 MasterControlId 2800 TargetParamId 100 "
                                  "ConversionMethod Linear",
                                  "masterValue targetValues", "0.000000 5.000000"}));
    EXPECT_EQ(capture.Lines()[0].tag, "TESSEL_LOG_Preset");
}

class RecordingChangeListener : public IPresetChangeListener {
  public:
    void OnAllChanged() override { calls.push_back("all"); }
    void OnParametersChanged() override { calls.push_back("parameters"); }
    void OnIdentityChanged() override { calls.push_back("identity"); }
    void OnChunksChanged() override { calls.push_back("chunks"); }
    void OnLinkLawsChanged() override { calls.push_back("laws"); }
    std::vector<std::string> calls;
};

TEST(SuperPreset, ForwardsAndNotifies) {
    LogCapture capture(4);
    SuperPreset super;
    auto listener = std::make_shared<RecordingChangeListener>();
    super.AddListener(listener);
    super.AddListener(listener);
    EXPECT_TRUE(super.IsEmpty());
    super.SetParameter(1, 1.0);
    super.SetParameterArray({2}, {2.0});
    super.SetParameterArray(std::map<unsigned int, double>{{3, 3.0}});
    super.ClearParameter(1);
    super.ClearParameterArray({2});
    super.SetChunk(1, kOneLaw);
    EXPECT_EQ(super.GetAllParameters(), (std::map<unsigned int, double>{{3, 3.0}}));
    // A super preset is a user preset: its laws start with the marker.
    ASSERT_EQ(super.GetLinkLawEntries().size(), 2u);
    EXPECT_EQ(super.GetLinkLawEntries()[0].SourceControlId, kLinkLawClearMarkerSource);
    super.ClearChunk(1);
    super.ClearAllChunks();
    super.ClearAllParameters();
    super.ClearAll();
    EXPECT_EQ(listener->calls, (std::vector<std::string>{"parameters", "parameters", "parameters",
                                                         "parameters", "parameters", "chunks",
                                                         "chunks", "chunks", "parameters", "all"}));
    super.RemoveListener(listener);
    super.SetParameter(4, 4.0);
    EXPECT_EQ(listener->calls.size(), 10u);
    EXPECT_EQ(super.GetParameterCount(), 1u);
}

}  // namespace
}  // namespace TesselFX

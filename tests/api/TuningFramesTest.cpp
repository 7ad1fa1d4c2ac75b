// Tuning through the locking manager of a real control object: the frames that reach the
// sender, and the link-law source values that the manager keeps.

#include <gtest/gtest.h>

#include "LogCapture.h"
#include "StaticControlObject.h"

namespace TesselFX {
namespace test {
namespace {

using bringup_test::Block;
using bringup_test::Frame;
using bringup_test::LinkLaw;
using Parameters = std::map<unsigned int, double>;

class TuningFramesTest : public StaticControlTest {
  protected:
    void SetUp() override { ASSERT_TRUE(Init()); }
};

TEST_F(TuningFramesTest, WhatTheToolChangedGoesBackWhenTuningEndsAndOutWithAFlush) {
    // A host send first takes the handle's changes; the tool's value is then sent back
    // although the handle changed nothing since.
    ASSERT_TRUE(m_manager->SetParameter(Settings(), 1006, 2.0));
    Take();
    ASSERT_TRUE(m_manager->SetParameterFromTuning(Settings(), 1006, 4.0));
    EXPECT_EQ(Take(), Frames{Frame({Block(4158, {{14, 4.0f}})})});
    ASSERT_TRUE(m_manager->StartTuningMode(Settings(), false));
    EXPECT_EQ(Take(), Frames{Frame({Block(4158, {{14, 2.0f}})})});

    // A tool's write while waiting for a flush goes out with the flush.
    ASSERT_TRUE(m_manager->WaitForFlush(Settings()));
    ASSERT_TRUE(m_manager->SetParameterFromTuning(Settings(), 1038, 0.25));
    EXPECT_TRUE(Take().empty());
    ASSERT_TRUE(m_manager->Flush(Settings()));
    EXPECT_EQ(Take(), Frames{Frame({Block(4160, {{14, 0.25f}})})});
}

TEST_F(TuningFramesTest, TheToolsLinkLawsAndTheSourceValuesOfTheManager) {
    TesselTuning::FullPreset preset;
    preset.hasParameters = true;
    preset.parameters = {{2821, 1.0}};
    preset.hasLlChunk = true;
    const std::string law = LinkLaw(0, 1038, {{0.0f, 0.0f}, {1000.0f, 1000.0f}});
    preset.llChunk.assign(law.begin(), law.end());
    ASSERT_TRUE(m_manager->StartTuningMode(Settings(), true));
    ASSERT_TRUE(m_manager->SetFullPresetFromTuning(Settings(), preset, true));
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}}), Block(4158, {{14, 1.0f}}),
                                    Block(4160, {{14, 0.5f}}), Block(4272, {{5, 1.0f}})})});

    LogCapture capture;
    double value = 0.0;
    EXPECT_FALSE(m_manager->GetLinkLawsSourceValue(Settings(), 0, value));
    EXPECT_TRUE(capture.Has(4, "sourceIndex 0 is found"));
    Parameters values;
    ASSERT_TRUE(m_manager->GetLinkLawsParametersArray(Settings(), values));
    EXPECT_EQ(values, (Parameters{{1038, 0.5}}));

    ASSERT_TRUE(m_manager->SetLinkLawsValue(Settings(), 0, -20.0, 25.0));
    EXPECT_TRUE(capture.Has(1, "SetLinkLawsValue 0 -20.000000 25.000000"));
    EXPECT_EQ(Take(), Frames{Frame({Block(4160, {{14, 250.0f}}), Block(4271, {{0, 25.0f}})})});
    ASSERT_TRUE(m_manager->GetLinkLawsSourceValue(Settings(), 0, value));
    EXPECT_EQ(value, -20.0);
    ASSERT_TRUE(m_manager->GetLinkLawsSourceValues(Settings(), {0, 1}, values));
    EXPECT_EQ(values, (Parameters{{0, -20.0}}));
    values.clear();
    ASSERT_TRUE(m_manager->GetLinkLawsParametersArray(Settings(), values));
    EXPECT_EQ(values, (Parameters{{1038, 250.0}}));

    // Without a notifier the full preset goes nowhere, and the call still succeeds.
    TesselTuning::FullPreset out;
    EXPECT_TRUE(m_manager->GetFullPreset(Settings(), out));
    EXPECT_FALSE(out.hasParameters);

    // Leaving tuning drops the tool's law; the system preset has none.
    ASSERT_TRUE(m_manager->StartTuningMode(Settings(), false));
    EXPECT_EQ(Take(), Frames{Frame({Block(4160, {{14, 0.5f}})})});
    values.clear();
    ASSERT_TRUE(m_manager->GetLinkLawsParametersArray(Settings(), values));
    EXPECT_TRUE(values.empty());
    EXPECT_EQ(capture.Texts(4).size(), 2u);
}

}  // namespace
}  // namespace test
}  // namespace TesselFX

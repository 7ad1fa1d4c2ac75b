// Tuning through the locking manager of a real control object: the frames that reach the
// sender come from the stand-in DSP library, which turns parameter p into block 4096 + p / 16
// with the inputs of its group of sixteen.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../e2e/BringupFiles.h"
#include "LogCapture.h"
#include "api/zorbaudio_control_Hifi3z.h"
#include "api/zorbaudio_control_base.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManager.h"

namespace TesselFX {
namespace {

using bringup_test::Block;
using bringup_test::Frame;
using bringup_test::LinkLaw;
using bringup_test::PresetFile;
using bringup_test::PresetRecord;
using bringup_test::TempDir;
using Frames = std::vector<std::string>;
using Parameters = std::map<unsigned int, double>;

std::vector<std::string> g_frames;

int RecordingSend(void*, CommonSettings*, const void* data, uint32_t size, void*, uint32_t*) {
    g_frames.emplace_back(static_cast<const char*>(data), size);
    return 0;
}

/// The frames sent since the last call.
Frames Take() {
    Frames frames;
    frames.swap(g_frames);
    return frames;
}

/// Music (1,1): parameter 1 at 0, 1006 at 1 and 1038 at 0.5; Movie (1,2): 1054 at 9.
class TuningFramesTest : public ::testing::Test {
  protected:
    TuningFramesTest() {
        PresetRecord music;
        music.outputMode = 1;
        music.soundMode = 1;
        music.parameters = {{1, 0.0}, {1006, 1.0}, {1038, 0.5}};
        PresetRecord movie = music;
        movie.soundMode = 2;
        movie.parameters = {{1054, 9.0}};
        const std::string presets = m_dir.Write("system.zps", PresetFile({music, movie}));
        const std::string config = m_dir.Write(
            "hal.ini",
            "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
            "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nMovie=OM:1,SM:2\n"
            "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1\n"
            "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
        void* object = nullptr;
        zorbaudio_create(&object);
        m_manager.reset(static_cast<HalControlManager*>(object));
        m_search.AddUint("INSTANCE", 1);
        g_frames.clear();
        m_ready = zorbaudio_initialize(m_manager.get(), presets.c_str(), "", config.c_str(),
                                       RecordingSend);
    }

    const zorbaudio_settings_t* Settings() { return m_search.GetSettings(); }
    bool Tuning() {
        bool tuning = false;
        EXPECT_TRUE(m_manager->IsTuningMode(Settings(), tuning));
        return tuning;
    }

    TempDir m_dir;
    std::unique_ptr<HalControlManager> m_manager;
    ZorbAudioSettings m_search;
    bool m_ready = false;
};

TEST_F(TuningFramesTest, LeavingTuningSendsTheSystemPresetAgain) {
    ASSERT_TRUE(m_ready);
    ASSERT_TRUE(m_manager->StartTuningMode(Settings(), true));
    EXPECT_TRUE(Tuning());
    EXPECT_TRUE(Take().empty());

    // The first send is full, with the tool's value.
    ASSERT_TRUE(m_manager->SetParameterFromTuning(Settings(), 1006, 4.0));
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}}), Block(4158, {{14, 4.0f}}),
                                    Block(4160, {{14, 0.5f}})})});
    ASSERT_TRUE(
        m_manager->SetParametersArrayFromTuning(Settings(), {{1006, 4.0}, {1022, 2.0}}, false));
    EXPECT_EQ(Take(), Frames{Frame({Block(4159, {{14, 2.0f}})})});

    // The system presets never saw the tool's values. A parameter that the system preset
    // lacks (1022) is not sent: the DSP keeps the tool's value.
    ASSERT_TRUE(m_manager->StartTuningMode(Settings(), false));
    EXPECT_FALSE(Tuning());
    EXPECT_EQ(Take(), Frames{Frame({Block(4158, {{14, 1.0f}})})});
    ASSERT_TRUE(m_manager->StartTuningMode(Settings(), false));
    EXPECT_TRUE(Take().empty());

    // A tool may write without starting: the manager makes the tuning data first.
    ASSERT_TRUE(m_manager->SetParameterFromTuning(Settings(), 1038, 0.25));
    EXPECT_TRUE(Tuning());
    EXPECT_EQ(Take(), Frames{Frame({Block(4160, {{14, 0.25f}})})});
    ASSERT_TRUE(m_manager->SetActive(Settings(), 1, 2));
    EXPECT_TRUE(Take().empty());
    ASSERT_TRUE(m_manager->StartTuningMode(Settings(), false));
    EXPECT_EQ(Take(), Frames{Frame({Block(4161, {{14, 9.0f}})})});
}

TEST_F(TuningFramesTest, TheToolsLinkLawsAndTheSourceValuesOfTheManager) {
    ASSERT_TRUE(m_ready);
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

    test::LogCapture capture;
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
}  // namespace TesselFX

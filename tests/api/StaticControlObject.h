#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../e2e/BringupFiles.h"
#include "api/zorbaudio_control_Hifi3z.h"
#include "api/zorbaudio_control_base.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManager.h"

// A control object made by the bring-up of the static libraries, for tests that need the
// library's log lines. Presets: Music (1,1) with parameter 1 at 0, 1006 at 1 and 1038 at 0.5;
// Movie (1,2) with 1054 at 9. The stand-in DSP library turns parameter p into block
// 4096 + p / 16 with the inputs of its group of sixteen.
namespace TesselFX {
namespace test {

using Frames = std::vector<std::string>;

/// The frames that RecordingSend took since the last StaticControlTest::Take, and what it
/// answers; one test at a time.
inline Frames g_sentFrames;
inline int g_sendResult = 0;

inline int RecordingSend(void*, CommonSettings*, const void* data, uint32_t size, void*,
                         uint32_t*) {
    g_sentFrames.emplace_back(static_cast<const char*>(data), size);
    return g_sendResult;
}

/// The configuration with the given control lines; extra sections go in before the
/// converter's section.
inline std::string Config(const std::string& controls, const std::string& extra = "",
                          const std::string& dspKitPath = DSPKIT_SIM_PATH) {
    return "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
           "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nMovie=OM:1,SM:2\n"
           "[HAL_SUPPORTED_CONTROLS]\n" +
           controls + "\n" + extra + "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" + dspKitPath + "\n";
}

const char* const kSpeaker = "Speaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1";

class StaticControlTest : public ::testing::Test {
  protected:
    StaticControlTest() {
        bringup_test::PresetRecord music;
        music.outputMode = 1;
        music.soundMode = 1;
        music.parameters = {{1, 0.0}, {1006, 1.0}, {1038, 0.5}};
        bringup_test::PresetRecord movie = music;
        movie.soundMode = 2;
        movie.parameters = {{1054, 9.0}};
        m_presetPath = m_dir.Write("system.zps", bringup_test::PresetFile({music, movie}));
        m_configPath = m_dir.Write("hal.ini", Config(kSpeaker));
        void* object = nullptr;
        zorbaudio_create(&object);
        m_manager.reset(static_cast<HalControlManager*>(object));
        m_search.AddUint("INSTANCE", 1);
        g_sentFrames.clear();
        g_sendResult = 0;
    }

    bool Init(const std::string& configPath, DspSendFunction sender = RecordingSend) {
        return zorbaudio_initialize(m_manager.get(), m_presetPath.c_str(), "", configPath.c_str(),
                                    sender);
    }
    bool Init() { return Init(m_configPath); }
    const zorbaudio_settings_t* Settings() { return m_search.GetSettings(); }
    /// The frames sent since the last call.
    Frames Take() {
        Frames frames;
        frames.swap(g_sentFrames);
        return frames;
    }

    bringup_test::TempDir m_dir;
    std::string m_presetPath;
    std::string m_configPath;
    std::unique_ptr<HalControlManager> m_manager;
    ZorbAudioSettings m_search;
};

}  // namespace test
}  // namespace TesselFX

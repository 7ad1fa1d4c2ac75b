// Preset files that break the layout's rules, through the exported functions: whatever the
// file holds, no call may throw out of the library or crash it.

#include <gtest/gtest.h>

#include <string>

#include "BringupFiles.h"
#include "zbhalcontroller/zb_api.h"

namespace bringup_test {
namespace {

int AcceptingSender(void*, uint32_t, const void*, uint32_t, void*, uint32_t*, void*) { return 0; }

// Found by fuzzing: the pair (1,2) has no base preset and its one sub preset carries the mask
// 0x3D of five bits. Its merge threw std::out_of_range through zb_set_active.
TEST(MalformedPresetFileTest, APairWithoutBasePresetOrWithAMultiBitMaskDoesNotThrow) {
    PresetRecord music;
    music.outputMode = 1;
    music.soundMode = 1;
    music.parameters = {{1, 0.0}, {1006, 1.0}};
    PresetRecord broken;
    broken.outputMode = 1;
    broken.soundMode = 2;
    broken.subtypeMask = 0x3D;
    broken.parameters = {{1054, 9.0}};
    TempDir dir;
    const std::string presets = dir.Write("system.zps", PresetFile({music, broken}));
    const std::string config = dir.Write(
        "hal.ini",
        "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
        "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nBroken=OM:1,SM:2\n"
        "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Broken,INSTANCE:1\n"
        "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");

    void* handle = nullptr;
    ASSERT_EQ(zb_create(&handle, nullptr), 1);
    ASSERT_EQ(zb_initialize(handle, presets.c_str(), "", config.c_str(), AcceptingSender), 1);
    EXPECT_NO_THROW(zb_set_active(handle, 1, 1, 2));
    EXPECT_NO_THROW(zb_set_volume(handle, 1, 0.5));
    EXPECT_NO_THROW(zb_on_dsp_wakeup(handle, 1));
    EXPECT_EQ(zb_set_active(handle, 1, 1, 1), 1);
    zb_destroy(&handle);
}

}  // namespace
}  // namespace bringup_test

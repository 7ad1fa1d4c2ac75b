// Notifications to the tuning tool through the real shared library: what the host changes
// reaches a recording notifier as "dsp_instance=<n>;tessel_data=<base64 frame>".

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "BringupFiles.h"
#include "zbhalcontroller/zb_api.h"

namespace bringup_test {
namespace {

int IgnoringSender(void*, uint32_t, const void*, uint32_t, void*, uint32_t*, void*) { return 0; }

/// The tool side: records each notification and answers with result; onNotify, when set, runs
/// inside the callback.
struct Tool {
    void* handle = nullptr;
    std::vector<std::string> texts;
    int result = 0;
    std::function<void()> onNotify;
};

int RecordingNotifier(void* handle, const void* data, uint32_t size, void* context) {
    Tool* tool = static_cast<Tool*>(context);
    EXPECT_EQ(handle, tool->handle);
    tool->texts.emplace_back(static_cast<const char*>(data), size);
    if (tool->onNotify) tool->onNotify();
    return tool->result;
}

PresetRecord Preset(uint32_t om, uint32_t sm, std::map<unsigned, double> parameters) {
    PresetRecord record;
    record.outputMode = om;
    record.soundMode = sm;
    record.name = "p" + std::to_string(om) + std::to_string(sm);
    record.parameters = std::move(parameters);
    return record;
}

class NotifyE2eTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string presets =
            m_dir.Write("system.zps", PresetFile({Preset(1, 1, {{1, 0.0}, {1006, 1.0}}),
                                                  Preset(1, 2, {{1, 0.0}, {1022, 2.0}})}));
        const std::string config = m_dir.Write(
            "hal.ini",
            "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
            "[HAL_VOLUME_PRIORITY]\nAUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"
            "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nMovie=OM:1,SM:2\n"
            "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1\n"
            "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
        ASSERT_EQ(zb_create(&m_handle, &m_tool), 1);
        m_tool.handle = m_handle;
        ASSERT_EQ(zb_initialize(m_handle, presets.c_str(), "", config.c_str(), IgnoringSender), 1);
    }
    void TearDown() override { zb_destroy(&m_handle); }

    TempDir m_dir;
    Tool m_tool;
    void* m_handle = nullptr;
};

TEST_F(NotifyE2eTest, RegistrationNeedsAMatchingHandler) {
    void* fresh = nullptr;
    ASSERT_EQ(zb_create(&fresh, &m_tool), 1);
    EXPECT_EQ(zb_register_notifier(fresh, 1, RecordingNotifier), 0);
    EXPECT_EQ(zb_register_notifier(fresh, 1, nullptr), 0);
    zb_destroy(&fresh);

    EXPECT_EQ(zb_register_notifier(m_handle, 3, RecordingNotifier), 0);
    EXPECT_EQ(zb_register_notifier(m_handle, 3, nullptr), 0);
    // Erasing what was never registered succeeds for a matching instance.
    EXPECT_EQ(zb_register_notifier(m_handle, 1, nullptr), 1);
    EXPECT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    EXPECT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    EXPECT_EQ(zb_register_notifier(m_handle, 1, nullptr), 1);
    EXPECT_EQ(zb_register_notifier(m_handle, 1, nullptr), 1);
    EXPECT_TRUE(m_tool.texts.empty());
}

}  // namespace
}  // namespace bringup_test

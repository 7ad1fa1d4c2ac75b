#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "BringupFiles.h"
#include "ToolFrames.h"
#include "zbhalcontroller/zb_api.h"

// The tuning tool's side of the exported interface: a control object with a recording notifier.
namespace bringup_test {

inline int IgnoringSender(void*, uint32_t, const void*, uint32_t, void*, uint32_t*, void*) {
    return 0;
}

/// The tool: records each notification's text and answers with result; onNotify, when set,
/// runs inside the callback.
struct Tool {
    void* handle = nullptr;
    std::vector<std::string> texts;
    int result = 0;
    std::function<void()> onNotify;

    /// The frames notified since the last call; each text must carry the envelope of instance.
    std::vector<std::string> TakeFrames(uint32_t instance = 1) {
        const std::string header = "dsp_instance=" + std::to_string(instance) + ";tessel_data=";
        std::vector<std::string> frames;
        for (const std::string& text : texts) {
            if (text.compare(0, header.size(), header) != 0) {
                ADD_FAILURE() << "no envelope: " << text;
                continue;
            }
            const std::string body = text.substr(header.size());
            EXPECT_EQ(ToText(FromText(body)), body) << "not base64 with fill";
            frames.push_back(FromText(body));
        }
        texts.clear();
        return frames;
    }
};

inline int RecordingNotifier(void* handle, const void* data, uint32_t size, void* context) {
    Tool* tool = static_cast<Tool*>(context);
    EXPECT_EQ(handle, tool->handle);
    tool->texts.emplace_back(static_cast<const char*>(data), size);
    if (tool->onNotify) tool->onNotify();
    return tool->result;
}

/// A control object of one handler, instance 1, with presets Music (1,1) and Movie (1,2), and
/// the stand-in DSP library.
class ToolSessionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string presets =
            m_dir.Write("system.zps", PresetFile({Preset(1, 1, 0, 0, {{1, 0.0}, {1006, 1.0}}),
                                                  Preset(1, 2, 0, 0, {{1, 0.0}, {1022, 2.0}})}));
        const std::string config =
            m_dir.Write("hal.ini",
                        "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
                        "[HAL_VOLUME_PRIORITY]\nAUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"
                        "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nMovie=OM:1,SM:2\n"
                        "[HAL_SUPPORTED_CONTROLS]\n"
                        "Speaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1\n"
                        "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
        ASSERT_EQ(zb_create(&m_handle, &m_tool), 1);
        m_tool.handle = m_handle;
        ASSERT_EQ(zb_initialize(m_handle, presets.c_str(), "", config.c_str(), IgnoringSender), 1);
    }
    void TearDown() override { zb_destroy(&m_handle); }

    /// zb_get_command with the text of frame and a reply buffer of replySize bytes; reply gets
    /// the decoded reply frame, or "#" when the call fails.
    int Get(const std::string& frame, std::string& reply, uint32_t replySize = 4096) {
        std::vector<char> buffer(replySize, '\0');
        const int result =
            zb_get_command(m_handle, 1, ToText(frame).c_str(), buffer.data(), replySize);
        reply = result == 1 ? FromText(std::string(buffer.data())) : "#";
        return result;
    }

    TempDir m_dir;
    Tool m_tool;
    void* m_handle = nullptr;
};

}  // namespace bringup_test

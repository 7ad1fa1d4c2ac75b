// Notifications to the tuning tool through the real shared library: what the host changes
// reaches a recording notifier as "dsp_instance=<n>;tessel_data=<base64 frame>".

#include <gtest/gtest.h>

#include <cmath>

#include "ToolSession.h"

namespace bringup_test {
namespace {

using Frames = std::vector<std::string>;
using NotifyE2eTest = ToolSessionTest;

/// The frame of a link-law source value, id 31.
std::string Source(uint32_t index, double value) { return Msg(31, U32(index) + F64(value)); }

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
    ASSERT_EQ(zb_set_volume(m_handle, 1, 1.0), 1);
    EXPECT_TRUE(m_tool.texts.empty());
}

TEST_F(NotifyE2eTest, HostChangesReachTheToolAndRepeatedValuesDoNot) {
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    EXPECT_TRUE(m_tool.texts.empty());

    ASSERT_EQ(zb_set_active(m_handle, 1, 1, 2), 1);
    EXPECT_EQ(m_tool.TakeFrames(),
              (Frames{Msg(4, Pairs({{1, 0.0}, {1022, 2.0}})), Msg(6, U32(1) + U32(0))}));

    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 3.0), 1);
    EXPECT_EQ(m_tool.TakeFrames(), Frames{Msg(4, Pairs({{1, 0.0}, {1022, 3.0}}))});
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 3.0), 1);
    EXPECT_TRUE(m_tool.TakeFrames().empty());

    // Source 0 carries the volume in dB.
    ASSERT_EQ(zb_set_volume(m_handle, 1, 1.0), 1);
    EXPECT_EQ(m_tool.TakeFrames(), Frames{Source(0, 0.0)});
    ASSERT_EQ(zb_set_volume(m_handle, 1, 0.1), 1);
    EXPECT_EQ(m_tool.TakeFrames(), Frames{Source(0, 20.0 * std::log10(0.1))});

    // Enable reaches the DSP, not the parameter set that the tool sees.
    ASSERT_EQ(zb_set_enable(m_handle, 1, 0), 1);
    EXPECT_TRUE(m_tool.TakeFrames().empty());

    // The host's parameter stays over a change of preset.
    ASSERT_EQ(zb_set_sound_mode(m_handle, 1, 1), 1);
    EXPECT_EQ(m_tool.TakeFrames(), Frames{Msg(4, Pairs({{1, 0.0}, {1006, 1.0}, {1022, 3.0}}))});

    // The exact text of one notification.
    ASSERT_EQ(zb_set_volume(m_handle, 1, 1.0), 1);
    EXPECT_EQ(m_tool.texts,
              std::vector<std::string>{"dsp_instance=1;tessel_data=HwAAAAAAAAAAAAAAAAAAAA=="});
}

TEST_F(NotifyE2eTest, AFailingNotifierChangesNothingAndAnErasedOneHearsNothing) {
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    m_tool.result = -1;
    ASSERT_EQ(zb_set_active(m_handle, 1, 1, 2), 1);
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 3.0), 1);
    EXPECT_EQ(m_tool.TakeFrames().size(), 3u);

    ASSERT_EQ(zb_register_notifier(m_handle, 1, nullptr), 1);
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 4.0), 1);
    ASSERT_EQ(zb_set_volume(m_handle, 1, 0.5), 1);
    EXPECT_TRUE(m_tool.texts.empty());

    // Registered again, it compares with what was sent while it was away.
    m_tool.result = 0;
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 4.0), 1);
    EXPECT_TRUE(m_tool.texts.empty());
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 5.0), 1);
    EXPECT_EQ(m_tool.TakeFrames(), Frames{Msg(4, Pairs({{1, 0.0}, {1022, 5.0}}))});
}

TEST_F(NotifyE2eTest, ANotifierMayCallBackIntoTheLibrary) {
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    ASSERT_EQ(zb_set_active(m_handle, 1, 1, 2), 1);
    m_tool.TakeFrames();

    // A change made from inside the callback is announced from inside it.
    int calls = 0;
    m_tool.onNotify = [&] {
        ++calls;
        char version[16] = {};
        EXPECT_EQ(zb_get_version(m_handle, 1, "halcontroller", version, sizeof(version)), 1);
        if (calls == 1) {
            EXPECT_EQ(zb_set_parameter(m_handle, 1, 1022, 7.0), 1);
        }
    };
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 6.0), 1);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(m_tool.TakeFrames(), (Frames{Msg(4, Pairs({{1, 0.0}, {1022, 6.0}})),
                                           Msg(4, Pairs({{1, 0.0}, {1022, 7.0}}))}));

    // A notifier that makes the same change from inside every call is told of it once: the
    // handler compares with what it last announced.
    calls = 0;
    m_tool.onNotify = [&] {
        ++calls;
        EXPECT_EQ(zb_set_parameter(m_handle, 1, 1022, 8.0), 1);
    };
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 6.5), 1);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(m_tool.TakeFrames(), (Frames{Msg(4, Pairs({{1, 0.0}, {1022, 6.5}})),
                                           Msg(4, Pairs({{1, 0.0}, {1022, 8.0}}))}));
    m_tool.onNotify = nullptr;
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 1022, 7.0), 1);
    m_tool.TakeFrames();

    // The notifier may unregister itself from inside its own call.
    m_tool.onNotify = [&] { EXPECT_EQ(zb_register_notifier(m_handle, 1, nullptr), 1); };
    ASSERT_EQ(zb_set_active(m_handle, 1, 1, 1), 1);
    EXPECT_EQ(m_tool.TakeFrames(), Frames{Msg(4, Pairs({{1, 0.0}, {1006, 1.0}, {1022, 7.0}}))});
    ASSERT_EQ(zb_set_volume(m_handle, 1, 0.5), 1);
    EXPECT_TRUE(m_tool.texts.empty());

    // And a tuning command from inside the callback is answered.
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    std::string reply;
    m_tool.onNotify = [&] { EXPECT_EQ(Get(Msg(39, U32(0)), reply), 1); };
    ASSERT_EQ(zb_set_volume(m_handle, 1, 1.0), 1);
    EXPECT_EQ(reply, Msg(40, U32(1)));
}

std::vector<std::string> g_sentFrames;

int FrameRecorder(void*, uint32_t, const void* data, uint32_t size, void*, uint32_t*, void*) {
    g_sentFrames.emplace_back(static_cast<const char*>(data), size);
    return 0;
}

/// A preset whose notifications come in several pieces: 1,001 parameters (more than the 997
/// of one message) and a link-law chunk of 14,500 bytes (more than the 11,973 of one
/// notification). Link laws are off, so the laws change no value. The frames sent go to
/// g_sentFrames.
class BigPresetE2eTest : public ToolSessionTest {
  protected:
    static std::map<unsigned, double> BigParameters() {
        std::map<unsigned, double> parameters{{1, 0.0}};
        for (unsigned i = 0; i < 1000; ++i) parameters[3000 + i] = i + 0.25;
        return parameters;
    }
    static std::string BigLinkLaws() {
        std::string laws;
        for (unsigned i = 0; i < 250; ++i) laws += LinkLaw(0, 3000 + i, {{0, 0}, {1000, 1000}});
        return laws;
    }
    /// The control object again, with Big (3,1) beside Music (1,1).
    void SetUp() override {
        ToolSessionTest::SetUp();
        PresetRecord big = Preset(3, 1, 0, 0, BigParameters());
        big.chunks[1] = BigLinkLaws();
        const std::string presets =
            m_dir.Write("big.zps", PresetFile({Preset(1, 1, 0, 0, {{1, 0.0}}), big}));
        const std::string config = m_dir.Write(
            "big.ini",
            "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
            "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nBig=OM:3,SM:1\n"
            "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Big,INSTANCE:1\n"
            "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
        ASSERT_EQ(zb_initialize(m_handle, presets.c_str(), "", config.c_str(), FrameRecorder), 1);
    }
    /// The parameter messages of a map: 997 entries each, in id order.
    static Frames ParameterFrames(const std::map<unsigned, double>& parameters) {
        Frames frames;
        std::map<unsigned, double> part;
        for (const auto& parameter : parameters) {
            part.insert(parameter);
            if (part.size() == 997) {
                frames.push_back(Msg(4, Pairs(part)));
                part.clear();
            }
        }
        if (!part.empty()) frames.push_back(Msg(4, Pairs(part)));
        return frames;
    }
};

TEST_F(BigPresetE2eTest, LongChangesAreCutIntoMessagesAndPieces) {
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    ASSERT_EQ(zb_set_active(m_handle, 1, 3, 1), 1);
    Frames frames = m_tool.TakeFrames();
    ASSERT_EQ(frames.size(), 4u);
    std::map<unsigned, double> parameters = BigParameters();
    const Frames parameterFrames = ParameterFrames(parameters);
    ASSERT_EQ(parameterFrames.size(), 2u);
    EXPECT_EQ(frames[0], parameterFrames[0]);
    EXPECT_EQ(frames[1], parameterFrames[1]);
    // The chunk message, 14,512 bytes, goes in two pieces of one session: 11,953 data bytes
    // fill the first to 11,973.
    const std::string chunk = Msg(6, U32(1) + U32(14500) + BigLinkLaws());
    ASSERT_EQ(frames[2].size(), 11973u);
    const uint32_t session = static_cast<uint8_t>(frames[2][12]) |
                             static_cast<uint8_t>(frames[2][13]) << 8 |
                             static_cast<uint8_t>(frames[2][14]) << 16 |
                             static_cast<uint32_t>(static_cast<uint8_t>(frames[2][15])) << 24;
    EXPECT_EQ(frames[2], Piece(0, 2, session, chunk.substr(0, 11953)));
    EXPECT_EQ(frames[3], Piece(1, 2, session, chunk.substr(11953)));

    // One changed value notifies every parameter again, and the unchanged chunk not.
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 3998, -1.5), 1);
    parameters[3998] = -1.5;
    EXPECT_EQ(m_tool.TakeFrames(), ParameterFrames(parameters));
    // The exact text of the shorter message.
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 3998, 7.0), 1);
    parameters[3998] = 7.0;
    ASSERT_EQ(m_tool.texts.size(), 2u);
    EXPECT_EQ(m_tool.texts[1],
              "dsp_instance=1;tessel_data=" + ToText(ParameterFrames(parameters)[1]));
    EXPECT_EQ(m_tool.texts[1].size(), 27u + 76u);
}

TEST_F(BigPresetE2eTest, AChangeFromInsideTheNotifierLeavesTheDspInStep) {
    ASSERT_EQ(zb_set_active(m_handle, 1, 3, 1), 1);
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    g_sentFrames.clear();
    m_tool.onNotify = [&] {
        m_tool.onNotify = nullptr;
        EXPECT_EQ(zb_set_parameter(m_handle, 1, 3008, 9.0), 1);
    };
    ASSERT_EQ(zb_set_parameter(m_handle, 1, 3000, 7.5), 1);
    // 3000 to 3007 feed inputs 8 to 15 of block 4283, 3008 to 3023 block 4284. The inner send
    // carries both changes; the outer one, whose values are older, sends nothing after it.
    std::map<unsigned, float> low, high;
    for (unsigned i = 0; i < 8; ++i) low[8 + i] = i == 0 ? 7.5f : i + 0.25f;
    for (unsigned i = 0; i < 16; ++i) high[i] = i == 0 ? 9.0f : i + 8.25f;
    EXPECT_EQ(g_sentFrames, (Frames{Frame({Block(4283, low), Block(4284, high)})}));
    EXPECT_EQ(m_tool.TakeFrames().size(), 4u);
}

}  // namespace
}  // namespace bringup_test

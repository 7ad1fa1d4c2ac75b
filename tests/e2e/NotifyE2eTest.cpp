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

}  // namespace
}  // namespace bringup_test

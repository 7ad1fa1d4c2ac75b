// Tuning mode driven by command text: the tool edits a live copy of the preset and asks for the
// whole preset, which comes back as a notification.

#include <gtest/gtest.h>

#include "ToolSession.h"

namespace bringup_test {
namespace {

using Frames = std::vector<std::string>;
using TuningCommandE2eTest = ToolSessionTest;

/// The payload of a full preset: flag words, parameters, link-law chunk, sources.
std::string FullPreset(uint32_t flag, uint32_t hasParameters, uint32_t hasChunk,
                       uint32_t hasSources, const std::map<unsigned, double>& parameters,
                       const std::string& chunk, const std::map<unsigned, double>& sources) {
    return U32(flag) + U32(hasParameters) + U32(hasChunk) + U32(hasSources) + Pairs(parameters) +
           U32(static_cast<uint32_t>(chunk.size())) + chunk + Pairs(sources);
}

TEST_F(TuningCommandE2eTest, TheToolEditsALiveCopyAndGetsThePresetAsANotification) {
    ASSERT_EQ(zb_register_notifier(m_handle, 1, RecordingNotifier), 1);
    ASSERT_EQ(zb_set_volume(m_handle, 1, 1.0), 1);
    m_tool.TakeFrames();
    std::string reply;

    ASSERT_EQ(Set(Msg(47, U32(1))), 1);
    ASSERT_EQ(Get(Msg(49, "any"), reply), 1);
    EXPECT_EQ(reply, Msg(49, U32(1)));

    ASSERT_EQ(Set(Msg(1, U32(1006) + F64(4.0))), 1);
    ASSERT_EQ(Set(Msg(3, Pairs({{1022, 6.0}, {3000, 7.5}}))), 1);
    ASSERT_EQ(Get(Msg(11, U32(3) + U32(1006) + U32(1022) + U32(3000)), reply), 1);
    EXPECT_EQ(reply, Msg(4, Pairs({{1006, 4.0}, {1022, 6.0}, {3000, 7.5}})));
    // Changes made by tuning are not announced to the tool that made them.
    EXPECT_TRUE(m_tool.TakeFrames().empty());

    // The preset goes out through the notifier; the reply itself is empty.
    ASSERT_EQ(Get(Msg(51, FullPreset(0, 0, 0, 0, {}, "", {})), reply), 1);
    EXPECT_EQ(reply, "");
    EXPECT_EQ(
        m_tool.TakeFrames(),
        Frames{Msg(51, FullPreset(0, 1, 1, 1, {{1, 0.0}, {1006, 4.0}, {1022, 6.0}, {3000, 7.5}}, "",
                                  {{0, 0.0}}))});

    ASSERT_EQ(Set(Msg(50, FullPreset(0, 1, 0, 0, {{1006, 8.0}}, "", {}))), 1);
    ASSERT_EQ(Get(Msg(10, U32(1006)), reply), 1);
    EXPECT_EQ(reply, Msg(2, U32(1006) + F64(8.0)));

    ASSERT_EQ(Get(Msg(30, U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(34, Pairs({{0, 0.0}})));
    ASSERT_EQ(Get(Msg(33, U32(2) + U32(3) + U32(0)), reply), 1);
    EXPECT_EQ(reply, Msg(34, Pairs({{0, 0.0}})));

    // Leaving tuning mode brings the preset back.
    ASSERT_EQ(Set(Msg(47, U32(0))), 1);
    ASSERT_EQ(Get(Msg(49), reply), 1);
    EXPECT_EQ(reply, Msg(49, U32(0)));
    ASSERT_EQ(Get(Msg(10, U32(1006)), reply), 1);
    EXPECT_EQ(reply, Msg(2, U32(1006) + F64(1.0)));
}

}  // namespace
}  // namespace bringup_test

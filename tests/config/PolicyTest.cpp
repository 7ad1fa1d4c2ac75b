#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

#include "LogCapture.h"
#include "config/OrientationPolicy.h"
#include "config/VolumePolicy.h"
#include "config/VolumeTableHelper.h"

namespace TesselFX {
namespace {

using test::LogCapture;

constexpr uint32_t kRing = 2;
constexpr uint32_t kMusic = 3;
constexpr uint32_t kAlarm = 4;
constexpr uint32_t kTts = 9;

VolumePolicy MakePolicy() {
    const VolumeSubtypeTables subtypes = {
        {"Music", {{-30.0, 0x2}, {-10.0, 0x4}, {0.0, 0x8}}},
    };
    // music HIGH, alarm HIGH, ring LOW, tts IGNORE
    const std::map<int32_t, int32_t> priorities = {{2, 1}, {3, 3}, {4, 3}, {9, 0}};
    return VolumePolicy(subtypes, priorities);
}

TEST(VolumePolicy, PriorityBeatsLoudnessAndIgnoredStreamsNeedMoreThanUnity) {
    const VolumePolicy policy = MakePolicy();
    LogCapture capture;
    EXPECT_EQ(policy.SelectVolumeFromTable({{kMusic, 0.2}, {kRing, 0.9}}), 0.2);
    EXPECT_TRUE(capture.Has(
        1, "VolumePolicy::SelectVolumeFromTable vol = 0.200000 selected streamType 3  Priority 3"));
    EXPECT_EQ(policy.SelectVolumeFromTable({{kMusic, 0.2}, {kAlarm, 0.5}}), 0.5);
    EXPECT_EQ(policy.SelectVolumeFromTable({{kMusic, 0.5}, {kAlarm, 0.2}}), 0.5);
    EXPECT_EQ(policy.SelectVolumeFromTable({{kMusic, 1.5}}), 1.5);
    EXPECT_EQ(policy.SelectVolumeFromTable({{kTts, 0.5}}), 1.0);
    EXPECT_EQ(policy.SelectVolumeFromTable({{kTts, 1.25}, {kRing, 0.1}}), 0.1);
    EXPECT_EQ(policy.SelectVolumeFromTable({{kTts, 1.25}}), 1.25);
    capture.Clear();
    EXPECT_EQ(policy.SelectVolumeFromTable({}), 1.0);
    EXPECT_TRUE(capture.Has(
        1,
        "VolumePolicy::SelectVolumeFromTable vol = 1.000000 selected streamType -1  Priority 0"));
    // Equal volumes at equal priority keep the lower stream number.
    capture.Clear();
    policy.SelectVolumeFromTable({{kMusic, 0.3}, {kAlarm, 0.3}});
    EXPECT_TRUE(capture.HasFragment("selected streamType 3 "));
    EXPECT_EQ(policy.GetDefaultVolume(), 1.0f);

    try {
        policy.SelectVolumeFromTable({{kMusic, 0.3}, {12, 0.1}});
        ADD_FAILURE() << "no exception";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "map::at:  key not found");
    }
}

TEST(VolumePolicy, RangesAreClosedAtTheTop) {
    const VolumePolicy policy = MakePolicy();
    LogCapture capture;
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Music", -30.0), 0x2u);
    EXPECT_TRUE(capture.Has(
        1, "VolumePolicy::GetSubtypeMaskForVolume vol = -30.000000dB returning subtype_mask 2"));
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Music", -29.9), 0x4u);
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Music", -10.0), 0x4u);
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Music", -9.99), 0x8u);
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Music", 0.0), 0x8u);
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Music", 1.0), 0u);
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Movie", -30.0), 0u);
    EXPECT_EQ(policy.GetSubtypeMaskForVolume("Movie", 0.0), 0u);

    EXPECT_EQ(VolumeToDb(1.0), 0.0);
    EXPECT_DOUBLE_EQ(VolumeToDb(0.01), -40.0);
    EXPECT_EQ(VolumeToDb(0.0), -std::numeric_limits<double>::infinity());
}

class RecordingListener : public IVolumeTableHelper::VolumeChangedListener {
  public:
    bool OnVolumeChanged(const double& volume) override {
        volumes.push_back(volume);
        return answer;
    }
    std::vector<double> volumes;
    bool answer = true;
};

TEST(VolumeTableHelper, ListenerAndFirstTable) {
    VolumeTableHelper helper(std::make_shared<VolumePolicy>(MakePolicy()));
    RecordingListener listener;
    LogCapture capture;
    EXPECT_FALSE(helper.SetVolumeTable({{kMusic, 0.5}}));  // no listener: nothing stored
    EXPECT_TRUE(capture.Texts().empty());
    helper.SetListener(&listener);
    EXPECT_TRUE(helper.SetVolumeTable({}));  // the first table always counts
    EXPECT_EQ(listener.volumes, std::vector<double>{1.0});
    EXPECT_TRUE(helper.SetVolumeTable({}));
    EXPECT_TRUE(capture.Has(1, "VolumeTableHelper::SetVolumeTable: No need to update volume."));
    EXPECT_EQ(listener.volumes.size(), 1u);

    listener.answer = false;
    EXPECT_FALSE(helper.SetVolumeTable({{kMusic, 0.25}, {kRing, 0.75}}));
    EXPECT_EQ(listener.volumes, (std::vector<double>{1.0, 0.25}));

    helper.ClearListener();
    EXPECT_FALSE(helper.SetVolumeTable({{kMusic, 0.5}}));
    helper.SetListener(&listener);
    listener.answer = true;
    EXPECT_TRUE(helper.SetVolumeTable({{kMusic, 0.5}}));  // ring removed, music changed
    EXPECT_EQ(listener.volumes.back(), 0.5);

    // An unknown stream throws through the helper; the table was stored before.
    EXPECT_THROW(helper.SetVolumeTable({{kMusic, 0.5}, {12, 0.1}}), std::out_of_range);
    EXPECT_FALSE(helper.NeedToUpdate({{kMusic, 0.5}, {12, 0.1}}));
}

TEST(VolumeTableHelper, ChangeMapAndNeedToUpdate) {
    VolumeTableHelper helper(std::make_shared<VolumePolicy>(MakePolicy()));
    using ChangeMap = IVolumeTableHelper::ChangeMap;
    EXPECT_EQ(helper.CompareTables({{1, 0.5}, {2, 0.5}, {3, 0.5}}, {{2, 0.5}, {3, 0.25}, {4, 0.0}}),
              (ChangeMap{{0, {4}}, {1, {1}}, {2, {3}}}));
    EXPECT_EQ(helper.CompareTables({{1, 0.5}}, {{1, 0.5}}), ChangeMap{});
    EXPECT_EQ(helper.CompareTables({}, {{7, 0.1}, {8, 0.2}}), (ChangeMap{{0, {7, 8}}}));
    EXPECT_EQ(helper.CompareTables({{7, 0.1}}, {}), (ChangeMap{{1, {7}}}));

    RecordingListener listener;
    helper.SetListener(&listener);
    ASSERT_TRUE(helper.SetVolumeTable({{kMusic, 0.5}}));
    // Changed to 0.0 alone: no update, and the stored table keeps 0.5.
    EXPECT_FALSE(helper.NeedToUpdate({{kMusic, 0.0}}));
    ASSERT_TRUE(helper.SetVolumeTable({{kMusic, 0.0}}));
    EXPECT_EQ(listener.volumes.size(), 1u);
    EXPECT_FALSE(helper.NeedToUpdate({{kMusic, 0.5}}));
    // Added at 0.0 alone: no update; added audible: update.
    EXPECT_FALSE(helper.NeedToUpdate({{kMusic, 0.5}, {kRing, 0.0}}));
    EXPECT_TRUE(helper.NeedToUpdate({{kMusic, 0.5}, {kRing, 0.0}, {kAlarm, 0.1}}));
    // Changed to another audible volume: update.
    EXPECT_TRUE(helper.NeedToUpdate({{kMusic, 0.6}}));
    // Two kinds, even both silent: update.
    EXPECT_TRUE(helper.NeedToUpdate({{kMusic, 0.0}, {kRing, 0.0}}));
    // Removed: update; the empty table after a full one selects 1.0.
    EXPECT_TRUE(helper.NeedToUpdate({}));
    ASSERT_TRUE(helper.SetVolumeTable({}));
    EXPECT_EQ(listener.volumes, (std::vector<double>{0.5, 1.0}));
    EXPECT_FALSE(helper.NeedToUpdate({}));
}

TEST(OrientationPolicy, ExactAnglesOnly) {
    LogCapture capture;
    const OrientationPolicy policy(
        {{"Music", {{0, 0x1}, {90, 0x2}, {180, 0x0}, {270, 0x30}}}, {"Movie", {{-90, 0x4}}}},
        {{"Music", 90}, {"Other", -45}});
    // The entry line, then each preset's name and its angles and masks.
    const std::vector<std::string> construction = {"Movie", "-90 4", "Music", "0 1",
                                                   "90 2",  "180 0", "270 48"};
    const auto texts = capture.Texts(0);
    ASSERT_EQ(texts.size(), construction.size() + 1);
    EXPECT_EQ(texts[0].rfind("Entering function ", 0), 0u);
    EXPECT_NE(texts[0].find("OrientationPolicy::OrientationPolicy("), std::string::npos);
    EXPECT_EQ(std::vector<std::string>(texts.begin() + 1, texts.end()), construction);

    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Music", 45), 0u);
    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Music", 90), 0x2u);
    EXPECT_TRUE(capture.Has(1,
                            "OrientationPolicy::GetSubtypeMaskForOrientation angle degree = 90 "
                            "degree returning subtype_mask 2"));
    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Music", 270), 0x30u);
    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Music", 180), 0u);
    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Music", 89), 0u);
    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Music", -270), 0u);
    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Movie", -90), 0x4u);
    EXPECT_EQ(policy.GetSubtypeMaskForOrientation("Unknown", 0), 0u);

    EXPECT_EQ(policy.GetDefaultOrientationAngle("Music"), 90);
    EXPECT_TRUE(capture.Has(
        1, "OrientationPolicy::GetDefaultOrientationAngle  default orientation angle = 90 "));
    EXPECT_EQ(policy.GetDefaultOrientationAngle("Other"), -45);
    EXPECT_EQ(policy.GetDefaultOrientationAngle("Movie"), 0);
    EXPECT_EQ(policy.GetDefaultOrientationAngle("Unknown"), 0);

    // Above level 0 the construction dump is skipped.
    LogCapture quiet(1);
    OrientationPolicy again({{"Music", {{0, 1}}}}, {});
    EXPECT_TRUE(quiet.Texts().empty());
}

}  // namespace
}  // namespace TesselFX

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ControlMocks.h"
#include "LogCapture.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManager.h"
#include "control/HalControlManagerImpl.h"
#include "control/HalNotifier.h"

namespace TesselFX {
namespace test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::InSequence;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::SetArgReferee;
using Handler = NiceMock<MockControlHandler>;

const char* const kNoHandler = "no valid ControlHandler";

/// A search record as the exported layer builds it.
std::unique_ptr<ZorbAudioSettings> Search(uint32_t instance) {
    auto settings = std::make_unique<ZorbAudioSettings>();
    settings->AddUint("INSTANCE", instance);
    return settings;
}

/// Mock handlers under descriptions whose settings hold INSTANCE as text, as the configuration
/// writes it. ordered lists the handlers in the manager's map order.
struct Handlers {
    ControlHandlerMap map;
    std::vector<std::shared_ptr<Handler>> ordered;

    std::shared_ptr<Handler> Add(const std::string& instance) {
        auto description = MakeDescription();
        description->GetSettings()->AddInt("DEV", 3);
        description->GetSettings()->AddString("INSTANCE", instance);
        auto handler = std::make_shared<Handler>();
        map[description] = handler;
        ordered.clear();
        for (const auto& entry : map) {
            ordered.push_back(std::static_pointer_cast<Handler>(entry.second));
        }
        return handler;
    }
};

/// A manager initialised with handlers.
struct Fixture {
    explicit Fixture(const std::vector<std::string>& instances,
                     const std::set<std::string>& features = {}) {
        for (const auto& instance : instances) {
            handlers.Add(instance);
        }
        manager.Initialize(handlers.map, features, {}, {});
    }
    Handlers handlers;
    HalControlManagerImpl manager;
};

TEST(HalControlManagerImplTest, AllRouteKeepsGoingAfterAFailureAndAndsTheResults) {
    Fixture f({"1", "1"});
    auto settings = Search(1);
    EXPECT_CALL(*f.handlers.ordered[0], SetEnable(false)).WillOnce(Return(false));
    EXPECT_CALL(*f.handlers.ordered[1], SetEnable(false)).WillOnce(Return(true));
    EXPECT_FALSE(f.manager.SetEnable(settings->GetSettings(), false));

    EXPECT_CALL(*f.handlers.ordered[0], SetActive(3u, 4u)).WillOnce(Return(true));
    EXPECT_CALL(*f.handlers.ordered[1], SetActive(3u, 4u)).WillOnce(Return(true));
    EXPECT_TRUE(f.manager.SetActive(settings->GetSettings(), 3, 4));

    EXPECT_CALL(*f.handlers.ordered[0], OnDspWakeUp()).WillOnce(Return(true));
    EXPECT_CALL(*f.handlers.ordered[1], OnDspWakeUp()).WillOnce(Return(false));
    EXPECT_FALSE(f.manager.OnDspWakeUp(settings->GetSettings()));
}

TEST(HalControlManagerImplTest, FirstAndAnyRoutesFollowMapOrder) {
    Fixture f({"1", "1", "1"});
    auto settings = Search(1);
    const auto& h = f.handlers.ordered;

    EXPECT_CALL(*h[0], GetBypass()).WillOnce(Return(true));
    EXPECT_CALL(*h[1], GetBypass()).Times(0);
    bool bypass = false;
    EXPECT_TRUE(f.manager.GetBypass(settings->GetSettings(), bypass));
    EXPECT_TRUE(bypass);

    EXPECT_CALL(*h[0], IsTuningMode()).WillOnce(Return(false));
    bool tuning = true;
    EXPECT_TRUE(f.manager.IsTuningMode(settings->GetSettings(), tuning));
    EXPECT_FALSE(tuning);

    {
        InSequence order;
        EXPECT_CALL(*h[0], GetParameter(7u, _)).WillOnce(Return(false));
        EXPECT_CALL(*h[1], GetParameter(7u, _))
            .WillOnce(DoAll(SetArgReferee<1>(-3.5), Return(true)));
    }
    EXPECT_CALL(*h[2], GetParameter(_, _)).Times(0);
    double value = 0.0;
    EXPECT_TRUE(f.manager.GetParameter(settings->GetSettings(), 7, value));
    EXPECT_EQ(value, -3.5);

    EXPECT_CALL(*h[0], GetDspVersion(_)).WillOnce(Return(false));
    EXPECT_CALL(*h[1], GetDspVersion(_))
        .WillOnce(DoAll(SetArgReferee<0>(std::string("dsp 2.1")), Return(true)));
    std::string version;
    EXPECT_TRUE(f.manager.GetVersion(settings->GetSettings(), "dsp", version));
    EXPECT_EQ(version, "dsp 2.1");
}

TEST(HalControlManagerImplTest, AnyRouteFailuresAreLoggedWithTheirTexts) {
    Fixture f({"1", "1"});
    auto settings = Search(1);
    for (const auto& handler : f.handlers.ordered) {
        EXPECT_CALL(*handler, GetParameter(2821u, _)).WillOnce(Return(false));
        EXPECT_CALL(*handler, GetChunk(3u, _)).WillOnce(Return(false));
        EXPECT_CALL(*handler, GetMeters(_, _)).WillOnce(Return(false));
    }
    LogCapture capture;
    double value = 0.0;
    std::vector<char> chunk;
    std::map<uint32_t, CMeterValue> meters;
    EXPECT_FALSE(f.manager.GetParameter(settings->GetSettings(), 2821, value));
    EXPECT_FALSE(f.manager.GetChunk(settings->GetSettings(), 3, chunk));
    EXPECT_FALSE(f.manager.GetMeters(settings->GetSettings(), {}, meters));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"parameter 2821 is found", "no chunk for index 3 is found",
                                        "fail to get meters"}));
}

TEST(HalControlManagerImplTest, GetParametersArrayAsksHandlersInTurn) {
    Fixture f({"1", "1"});
    auto settings = Search(1);
    const auto& h = f.handlers.ordered;

    // Without ids: all parameters of the first handler that has any.
    const std::map<unsigned int, double> all{{1, 0.0}, {2800, -12.0}};
    EXPECT_CALL(*h[0], GetParametersArray(::testing::A<std::map<unsigned int, double>&>()))
        .WillOnce(Return(false));
    EXPECT_CALL(*h[1], GetParametersArray(::testing::A<std::map<unsigned int, double>&>()))
        .WillOnce(DoAll(SetArgReferee<0>(all), Return(true)));
    std::map<unsigned int, double> out;
    EXPECT_TRUE(f.manager.GetParametersArray(settings->GetSettings(), {}, out));
    EXPECT_EQ(out, all);

    // With ids: the pairs found overwrite the result map, also when there are none.
    EXPECT_CALL(*h[0], GetParametersArray(std::vector<unsigned int>{5, 1}, _, _))
        .WillOnce(DoAll(SetArgReferee<1>(std::vector<unsigned int>{1}),
                        SetArgReferee<2>(std::vector<double>{0.5}), Return(true)));
    out = {{1, 9.0}, {4, 4.0}};
    EXPECT_TRUE(f.manager.GetParametersArray(settings->GetSettings(), {5, 1}, out));
    EXPECT_EQ(out, (std::map<unsigned int, double>{{1, 0.5}, {4, 4.0}}));

    for (const auto& handler : h) {
        EXPECT_CALL(*handler, GetParametersArray(std::vector<unsigned int>{5}, _, _))
            .WillOnce(Return(false));
    }
    LogCapture capture;
    EXPECT_FALSE(f.manager.GetParametersArray(settings->GetSettings(), {5}, out));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"no parameter is found"});
}

TEST(HalControlManagerImplTest, SetVolumeTableTakesActiveStreamsOnly) {
    Fixture f({"1"});
    auto settings = Search(1);
    const zorbaudio_stream_volume_t volumes[4] = {
        {0.5f, 1, {0, 0, 0}}, {0.75f, 0, {0, 0, 0}}, {0.25f, 2, {0, 0, 0}}, {1.0f, 0, {0, 0, 0}}};

    EXPECT_CALL(*f.handlers.ordered[0], SetVolumeTable(_)).Times(0);
    EXPECT_FALSE(f.manager.SetVolumeTable(settings->GetSettings(), 0, volumes));
    ::testing::Mock::VerifyAndClearExpectations(f.handlers.ordered[0].get());

    EXPECT_CALL(*f.handlers.ordered[0],
                SetVolumeTable(std::map<unsigned int, double>{{0, 0.5}, {2, 0.25}}))
        .WillOnce(Return(true));
    EXPECT_TRUE(f.manager.SetVolumeTable(settings->GetSettings(), 4, volumes));

    EXPECT_CALL(*f.handlers.ordered[0], SetVolumeTable(std::map<unsigned int, double>{}))
        .WillOnce(Return(false));
    EXPECT_FALSE(f.manager.SetVolumeTable(settings->GetSettings(), 1, &volumes[1]));

    // Nobody selected is no error here.
    LogCapture capture;
    EXPECT_TRUE(f.manager.SetVolumeTable(Search(2)->GetSettings(), 4, volumes));
    EXPECT_FALSE(capture.Has(kNoHandler));
}

TEST(HalControlManagerImplTest, LinkLawSourceValuesAreKeptPerHandlerThatTookThem) {
    Fixture f({"1", "1"});
    auto settings = Search(1);
    const auto& h = f.handlers.ordered;
    // The handlers get the master value; the manager keeps the source value.
    EXPECT_CALL(*h[0], SetLinkLawsValue(2u, 0.75)).WillOnce(Return(false));
    EXPECT_CALL(*h[1], SetLinkLawsValue(2u, 0.75)).WillOnce(Return(true));
    EXPECT_FALSE(f.manager.SetLinkLawsValue(settings->GetSettings(), 2, -6.0, 0.75));
    const std::shared_ptr<IControlHandler> first = h[0];
    const std::shared_ptr<IControlHandler> second = h[1];
    EXPECT_EQ(f.manager.GetLinkLawSourceValues().count(first), 0u);
    EXPECT_EQ(f.manager.GetLinkLawSourceValues().at(second),
              (std::map<unsigned int, double>{{2, -6.0}}));

    // Reads ask the first handler only, which took nothing.
    LogCapture capture;
    std::map<unsigned int, double> values{{9, 9.0}};
    EXPECT_TRUE(f.manager.GetLinkLawsSourceValues(settings->GetSettings(), {2}, values));
    EXPECT_TRUE(values.empty());
    double value = 0.0;
    EXPECT_FALSE(f.manager.GetLinkLawsSourceValue(settings->GetSettings(), 2, value));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"sourceIndex 2 is found"});

    EXPECT_CALL(*h[0], SetLinkLawsValue(2u, 0.5)).WillOnce(Return(true));
    EXPECT_CALL(*h[1], SetLinkLawsValue(2u, 0.5)).WillOnce(Return(true));
    EXPECT_TRUE(f.manager.SetLinkLawsValue(settings->GetSettings(), 2, -3.0, 0.5));
    EXPECT_TRUE(f.manager.GetLinkLawsSourceValue(settings->GetSettings(), 2, value));
    EXPECT_EQ(value, -3.0);
}

TEST(HalControlManagerImplTest, ASecondInitializeLetsTheReplacedHandlersGo) {
    HalControlManagerImpl manager;
    std::weak_ptr<Handler> replaced;
    {
        Handlers first;
        const std::shared_ptr<Handler> handler = first.Add("1");
        replaced = handler;
        // As a real handler does, it keeps the listener it is given, which holds it.
        auto kept = std::make_shared<std::shared_ptr<IParametersAndChunksChangedListener>>();
        ON_CALL(*handler, RegisterParametersAndChunksChangedListener(_))
            .WillByDefault([kept](const auto& listener) { *kept = listener; });
        ON_CALL(*handler, SetLinkLawsValue(_, _)).WillByDefault(Return(true));
        manager.Initialize(first.map, {}, {}, {});
    }
    auto settings = Search(1);
    ASSERT_TRUE(manager.SetLinkLawsValue(settings->GetSettings(), 0, -6.0, 0.5));
    ASSERT_TRUE(manager.RegisterNotifier(settings->GetSettings(),
                                         std::make_shared<HalNotifier>(nullptr, nullptr)));

    Handlers second;
    second.Add("1");
    manager.Initialize(second.map, {}, {}, {});
    EXPECT_TRUE(replaced.expired());
}

TEST(HalControlManagerImplTest, LinkLawParametersAndFullPresetsWalkTheHandlers) {
    Fixture f({"1", "1"});
    auto settings = Search(1);
    const auto& h = f.handlers.ordered;
    LinkLawEntry law;
    law.SourceControlId = 1;
    law.TargetParamId = 300;
    const std::vector<unsigned int> ids{1, 300};
    EXPECT_CALL(*h[0], GetLinkLawEntries(_))
        .WillOnce(DoAll(SetArgReferee<0>(std::vector<LinkLawEntry>{law}), Return(true)));
    EXPECT_CALL(*h[0], GetParametersArray(ids, _, _)).WillOnce(Return(false));
    EXPECT_CALL(*h[1], GetLinkLawEntries(_))
        .WillOnce(DoAll(SetArgReferee<0>(std::vector<LinkLawEntry>{law}), Return(true)));
    EXPECT_CALL(*h[1], GetParametersArray(ids, _, _))
        .WillOnce(DoAll(SetArgReferee<1>(std::vector<unsigned int>{300}),
                        SetArgReferee<2>(std::vector<double>{4.5}), Return(true)));
    std::map<unsigned int, double> values;
    EXPECT_TRUE(f.manager.GetLinkLawsParametersArray(settings->GetSettings(), values));
    EXPECT_EQ(values, (std::map<unsigned int, double>{{300, 4.5}}));

    // No laws at the first handler that has entries: success with nothing.
    EXPECT_CALL(*h[0], GetLinkLawEntries(_)).WillOnce(Return(false));
    EXPECT_CALL(*h[1], GetLinkLawEntries(_)).WillOnce(Return(true));
    values.clear();
    EXPECT_TRUE(f.manager.GetLinkLawsParametersArray(settings->GetSettings(), values));
    EXPECT_TRUE(values.empty());

    LogCapture capture;
    EXPECT_CALL(*h[0], GetLinkLawEntries(_)).WillOnce(Return(false));
    EXPECT_CALL(*h[1], GetLinkLawEntries(_)).WillOnce(Return(false));
    EXPECT_FALSE(f.manager.GetLinkLawsParametersArray(settings->GetSettings(), values));

    // The first failing handler stops the full preset.
    TesselTuning::FullPreset preset;
    EXPECT_CALL(*h[0], SetFullPresetFromTuning(_)).WillOnce(Return(false));
    EXPECT_CALL(*h[1], SetFullPresetFromTuning(_)).Times(0);
    EXPECT_FALSE(f.manager.SetFullPresetFromTuning(settings->GetSettings(), preset, true));
    EXPECT_CALL(*h[0], SetFullPresetFromTuning(_)).WillOnce(Return(true));
    EXPECT_CALL(*h[1], SetFullPresetFromTuning(_)).WillOnce(Return(true));
    EXPECT_TRUE(f.manager.SetFullPresetFromTuning(settings->GetSettings(), preset, true));
    EXPECT_FALSE(f.manager.SetFullPresetFromTuning(Search(7)->GetSettings(), preset, false));
    EXPECT_FALSE(f.manager.GetFullPreset(Search(7)->GetSettings(), preset));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"no linklaws is valid", "Failed to set fullPreset",
                                        kNoHandler, kNoHandler}));
}

TEST(HalControlManagerTest, CommandsFailWithoutAParser) {
    HalControlManager manager(nullptr);
    auto settings = Search(1);
    LogCapture capture;
    char reply[4];
    unsigned int replySize = 4;
    EXPECT_FALSE(manager.SetCommand(settings->GetSettings(), "x", 2));
    EXPECT_FALSE(manager.GetCommand(settings->GetSettings(), "x", 2, reply, replySize));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"SetCommand: this control object has no command parser",
                                        "GetCommand: this control object has no command parser"}));
}

}  // namespace
}  // namespace test
}  // namespace TesselFX

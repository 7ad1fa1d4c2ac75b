#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../preset/PresetTestData.h"
#include "ControlMocks.h"
#include "LogCapture.h"
#include "config/OrientationPolicy.h"
#include "control/ControlHandler.h"
#include "preset/LinkLawEntry.h"

namespace TesselFX {
namespace test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::Invoke;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::SetArgReferee;
using Buffers = std::vector<std::vector<char>>;

/// A handler over fakes, for what only fakes can provoke; the road from a call to the frames
/// is shown through the real library in tests/api and tests/e2e. The generator writes
/// recognisable buffers: system volume 'V' with its flag; a parameter set 'P' with the
/// parameter count. The sender records every buffer and answers with sendResult.
/// Presets of the description: Music (0, 0), Movie (0, 1), Speaker (1, 0). A preset handle's
/// parameters are {1: 0.0, 100: 10 * om + sm} and its link-law chunk is "LL".
class ControlHandlerTest : public ::testing::Test {
  protected:
    ControlHandlerTest() {
        description = MakeDescription(
            {std::make_shared<PresetDescription>("Music", 0, 0, 0, "VST", "OST"),
             std::make_shared<PresetDescription>("Movie", 0, 1, 0, "VST", "OST"),
             std::make_shared<PresetDescription>("Speaker", 1, 0, 0, "VST", "OST")});
        description->GetSettings()->AddString("INSTANCE", "0");
        orientationPolicy = std::make_shared<OrientationPolicy>(
            std::map<std::string, std::map<OrientationAngle, SubTypeMask>>{
                {"Music", {{0, 0}, {90, 4}}}},
            std::map<std::string, OrientationAngle>{{"Music", 90}});

        ON_CALL(*volumePolicy, GetDefaultVolume()).WillByDefault(Return(0.5f));
        ON_CALL(*volumePolicy, GetSubtypeMaskForVolume(_, _)).WillByDefault(Return(2u));
        ON_CALL(*presetSet, RequestPresetHandle(_, _))
            .WillByDefault(Invoke([this](unsigned int om, unsigned int sm) {
                auto& handle = handles[{om, sm}];
                if (!handle) {
                    handle = std::make_shared<NiceMock<MockPresetHandle>>();
                    ON_CALL(*handle, GetAllParameters())
                        .WillByDefault(Return(
                            std::map<unsigned int, double>{{1, 0.0}, {100, 10.0 * om + sm}}));
                    ON_CALL(*handle, GetChunk(1, _))
                        .WillByDefault(
                            DoAll(SetArgReferee<1>(std::vector<char>{'L', 'L'}), Return(true)));
                }
                return handle;
            }));
        ON_CALL(*sender, Send(_, _))
            .WillByDefault(Invoke([this](const std::shared_ptr<CommonSettings>& settings,
                                         const std::vector<char>& buffer) {
                EXPECT_EQ(settings, description->GetSettings());
                sent.push_back(buffer);
                return sendResult;
            }));
        ON_CALL(*generator, MakeSetSystemVolumeBuffer(_, _))
            .WillByDefault(Invoke([](std::vector<char>& out, bool flag) {
                out = {'V', static_cast<char>(flag)};
                return kStatusOk;
            }));
        ON_CALL(*generator, MakeSetParameterArrayBuffer(_, _, _))
            .WillByDefault(
                Invoke([](Buffers& out, const std::map<unsigned int, double>& parameters, bool) {
                    out.push_back({'P', static_cast<char>(parameters.size())});
                    return kStatusOk;
                }));
    }

    void Make() {
        handler = std::make_unique<ControlHandler>(sender, description, presetSet, volumePolicy,
                                                   volumeTableHelper, orientationPolicy, generator,
                                                   parser, converter);
        sent.clear();
    }

    std::shared_ptr<NiceMock<MockPresetHandle>> Handle(unsigned int om, unsigned int sm) {
        return handles[{om, sm}];
    }

    std::shared_ptr<NiceMock<MockDspBufferSender>> sender =
        std::make_shared<NiceMock<MockDspBufferSender>>();
    std::shared_ptr<ControlDescription> description;
    std::shared_ptr<NiceMock<MockPresetSet>> presetSet =
        std::make_shared<NiceMock<MockPresetSet>>();
    std::shared_ptr<NiceMock<MockVolumePolicy>> volumePolicy =
        std::make_shared<NiceMock<MockVolumePolicy>>();
    std::shared_ptr<NiceMock<MockVolumeTableHelper>> volumeTableHelper =
        std::make_shared<NiceMock<MockVolumeTableHelper>>();
    std::shared_ptr<OrientationPolicy> orientationPolicy;
    std::shared_ptr<NiceMock<MockGenerator>> generator =
        std::make_shared<NiceMock<MockGenerator>>();
    std::shared_ptr<NiceMock<MockReplyParser>> parser =
        std::make_shared<NiceMock<MockReplyParser>>();
    std::shared_ptr<NiceMock<MockMasterValueConverter>> converter =
        std::make_shared<NiceMock<MockMasterValueConverter>>();
    std::map<OmSm, std::shared_ptr<NiceMock<MockPresetHandle>>> handles;
    Buffers sent;
    bool sendResult = true;
    std::unique_ptr<ControlHandler> handler;
};

const std::vector<char> kParameters{'P', 2};

TEST_F(ControlHandlerTest, ConstructionDumpsAndTheVolumeListenerLivesAsLongAsTheHandler) {
    IVolumeTableHelper::VolumeChangedListener* listener = nullptr;
    EXPECT_CALL(*volumeTableHelper, SetListener(_)).WillOnce(::testing::SaveArg<0>(&listener));
    LogCapture capture;
    Make();
    EXPECT_EQ(listener, static_cast<IVolumeTableHelper::VolumeChangedListener*>(handler.get()));
    const auto texts = capture.Texts(1);
    ASSERT_GE(texts.size(), 3u);
    EXPECT_EQ(
        std::vector<std::string>(texts.end() - 3, texts.end()),
        (std::vector<std::string>{
            "virtual void TesselFX::ControlHandler::Dump() const ==== start ====", "INSTANCE=0;",
            "virtual void TesselFX::ControlHandler::Dump() const ====  end  ===="}));
    EXPECT_CALL(*volumeTableHelper, ClearListener()).Times(1);
    handler.reset();
}

TEST_F(ControlHandlerTest, WithoutPresetsReadsFail) {
    description = MakeDescription();
    EXPECT_CALL(*presetSet, RequestPresetHandle(_, _)).Times(0);
    LogCapture capture;
    Make();
    EXPECT_EQ(
        capture.ErrorTexts(),
        std::vector<std::string>{"ControlHandler Supported preset is not defined. Please make "
                                 "sure it's added to the config file."});
    capture.Clear();
    double value = 0.0;
    std::vector<char> chunk;
    EXPECT_FALSE(handler->GetParameter(1, value));
    EXPECT_FALSE(handler->GetChunk(1, chunk));
    EXPECT_FALSE(handler->SetCurrentPreset());
    EXPECT_TRUE(handler->SetActive(0, 0));
    EXPECT_EQ(capture.ErrorTexts(), (std::vector<std::string>{"no valid parameters could be got",
                                                              "no valid chunk could be got",
                                                              "no valid parameters could be got"}));
    EXPECT_TRUE(sent.empty());
}

TEST_F(ControlHandlerTest, SetOrientationSucceedsEvenWhenTheSendFails) {
    Make();
    EXPECT_TRUE(handler->SetOrientation(90));  // default angle: the mask stays 4
    EXPECT_TRUE(sent.empty());

    sendResult = false;
    EXPECT_CALL(*Handle(0, 0), SetSubtypeMasks(2u)).WillOnce(Return(true));
    LogCapture capture;
    EXPECT_TRUE(handler->SetOrientation(0));
    EXPECT_EQ(sent, Buffers{kParameters});
    EXPECT_TRUE(capture.Has(1,
                            "ControlHandler::SetOrientation Subtype changed for new "
                            "orientation, applying new preset."));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"SendBufferToDsp fail"});
    EXPECT_EQ(handler->GetSubtypeMasks(), 2u);
}

TEST_F(ControlHandlerTest, ALinkLawValueFromTheVolumeSurvivesAModeChange) {
    Make();
    EXPECT_CALL(*converter, Convert(_, _)).WillRepeatedly(Return(false));
    EXPECT_CALL(*converter, Convert(::testing::FloatNear(-20.0f, 1e-5f), _))
        .WillOnce(DoAll(SetArgReferee<1>(0.25f), Return(true)));
    EXPECT_CALL(*Handle(0, 0), SetLinkLawValue(0u, 0.25)).WillOnce(Return(true));
    LogCapture capture;
    EXPECT_TRUE(handler->SetVolume(0.1));
    EXPECT_TRUE(capture.Has(1,
                            "ControlHandler[sm=0;om=0;INSTANCE=0;] : SetVolume volume 0.100000 "
                            "volumeDb -20.000000dB"));
    EXPECT_TRUE(capture.Has(
        1, "ControlHandler::SetVolume trigger LL for new volume, applying new preset."));

    // The link-law value survives a mode change: the new handle gets it again.
    EXPECT_CALL(*presetSet, RequestPresetHandle(0u, 1u)).WillOnce(Invoke([this](auto, auto) {
        auto handle = std::make_shared<NiceMock<MockPresetHandle>>();
        EXPECT_CALL(*handle, SetLinkLawValue(0u, 0.25)).WillOnce(Return(true));
        handles[{0, 1}] = handle;
        return handle;
    }));
    EXPECT_TRUE(handler->SetActive(0, 1));
}

TEST_F(ControlHandlerTest, ParameterBuffersAreAllTriedAndSentAsGenerated) {
    Make();
    const Buffers frames{{1, 0, 0, 0, 2, 0, 0, 0, 'a', 'b'}, {1, 0, 0, 0, 0, 0, 0, 0}, {'z'}};
    EXPECT_CALL(*generator, MakeSetParameterArrayBuffer(
                                _, (std::map<unsigned int, double>{{1, 0.0}, {100, 0.0}}), true))
        .WillOnce(DoAll(SetArgReferee<0>(frames), Return(kStatusOk)));
    int calls = 0;
    EXPECT_CALL(*sender, Send(_, _))
        .Times(3)
        .WillRepeatedly(Invoke([&](const auto&, const std::vector<char>& buffer) {
            sent.push_back(buffer);
            return ++calls != 2;
        }));
    LogCapture capture;
    EXPECT_FALSE(handler->SetParametersArray({{100, 3.0}}, true));
    EXPECT_EQ(sent, frames);
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"SendBufferToDsp fail"});

    EXPECT_CALL(*generator, MakeSetParameterArrayBuffer(_, _, false))
        .WillOnce(Return(kStatusBadValue));
    EXPECT_FALSE(handler->SetCurrentPreset());
}

TEST_F(ControlHandlerTest, FailedMeterAndVersionExchangesAreLogged) {
    Make();
    const std::map<uint32_t, CMeterInfo> infos{{7, CMeterInfo(7, CMeterInfo::kTypeFloat, 1)}};
    std::map<uint32_t, CMeterValue> values{{7, CMeterValue(1.5f)}};
    ON_CALL(*generator, MakeGetMetersBuffer(_, _))
        .WillByDefault(DoAll(SetArgReferee<0>(std::vector<char>{4, 0, 0, 0}), Return(kStatusOk)));
    LogCapture capture;

    const std::vector<char> reply{3, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_CALL(*sender, SendAndReceive(_, _, _))
        .WillRepeatedly(DoAll(SetArgReferee<2>(reply), Return(true)));
    EXPECT_CALL(*parser, ParseReplyMetersBuffer(reply, infos, _)).WillOnce(Return(kStatusBadValue));
    EXPECT_FALSE(handler->GetMeters(infos, values));
    EXPECT_CALL(*generator, MakeGetMetersBuffer(_, _)).WillOnce(Return(kStatusBadValue));
    EXPECT_FALSE(handler->GetMeters(infos, values));
    EXPECT_EQ(capture.ErrorTexts(), (std::vector<std::string>{"ParseReplyMetersBuffer fail",
                                                              "MakeGetMetersBuffer fail"}));

    capture.Clear();
    EXPECT_CALL(*generator, MakeGetVersionBuffer(_))
        .WillRepeatedly(DoAll(SetArgReferee<0>(std::vector<char>{5, 0, 0, 0}), Return(kStatusOk)));
    std::string version;
    EXPECT_CALL(*sender, SendAndReceive(_, std::vector<char>{5, 0, 0, 0}, _))
        .WillOnce(Return(false));
    EXPECT_FALSE(handler->GetDspVersion(version));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"SendBufferToDsp fail"});
}

TEST_F(ControlHandlerTest, FromTuningCallsNeedTuningData) {
    Make();
    LogCapture capture;
    EXPECT_FALSE(handler->SetParameterFromTuning(1, 0.0));
    EXPECT_FALSE(handler->SetParametersArrayFromTuning({{1, 0.0}}, false));
    EXPECT_FALSE(handler->SetChunkFromTuning(1, {'L'}));
    EXPECT_FALSE(handler->SetChunkFromTuningNoResponse(1, {'L'}));
    TesselTuning::FullPreset preset;
    EXPECT_TRUE(handler->SetFullPresetFromTuning(preset));
    preset.hasLlChunk = true;
    EXPECT_FALSE(handler->SetFullPresetFromTuning(preset));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>(5, "tuning is not active yet"));
    EXPECT_TRUE(handler->StartTuningMode(false));
    EXPECT_TRUE(capture.Has(0, "tuning data does not exist"));
    EXPECT_FALSE(handler->IsTuningMode());
    EXPECT_TRUE(sent.empty());

    EXPECT_TRUE(handler->StartTuningMode(true));
    EXPECT_TRUE(handler->CreateTuningData());
    EXPECT_TRUE(capture.Has(0, "tuning data already exists"));
    EXPECT_TRUE(handler->SetParameterFromTuning(1, 0.5));
    EXPECT_TRUE(
        capture.Has(1, handler->GetDescriptionString() + " SetParameterFromTuning 1 = 0.500000"));
}

TEST_F(ControlHandlerTest, WithoutAPresetTuningStartsFromTheLinkLawValues) {
    description = MakeDescription({});
    LogCapture capture;
    Make();
    ASSERT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"ControlHandler Supported preset is not defined. Please "
                                       "make sure it's added to the config file."});
    EXPECT_TRUE(handler->SetLinkLawsValueImpl(0, 30.0));
    EXPECT_TRUE(handler->StartTuningMode(true));
    EXPECT_TRUE(handler->IsTuningMode());
    // The tool's law (target 100 = source / 10) and switch run on the value given before.
    const std::vector<char> law = LawOnTarget100();
    EXPECT_TRUE(handler->SetChunkFromTuningNoResponse(ZBAC_LINKLAWS, law));
    EXPECT_TRUE(handler->SetParameterFromTuning(2821, 1.0));
    std::map<unsigned int, double> parameters;
    EXPECT_TRUE(handler->GetParametersArray(parameters));
    EXPECT_EQ(parameters, (std::map<unsigned int, double>{{100, 3.0}, {2800, 30.0}, {2821, 1.0}}));
    std::vector<LinkLawEntry> entries;
    EXPECT_TRUE(handler->GetLinkLawEntries(entries));
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].TargetParamId, 100u);
    std::vector<char> chunk;
    EXPECT_TRUE(handler->GetChunk(ZBAC_LINKLAWS, chunk));
    EXPECT_EQ(chunk, law);
    EXPECT_EQ(sent, (Buffers{{'P', 0}, {'P', 3}}));

    // Leaving tuning without a preset sends nothing and the reads fail again.
    sent.clear();
    EXPECT_TRUE(handler->ClearTuningData());
    EXPECT_TRUE(sent.empty());
    EXPECT_FALSE(handler->GetLinkLawEntries(entries));
    EXPECT_FALSE(handler->GetParametersArray(parameters));
}

}  // namespace
}  // namespace test
}  // namespace TesselFX

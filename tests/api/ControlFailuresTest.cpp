// The control handler's refusals and failed sends through the manager of a real control object:
// the results, the frames, and the exact log lines.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "FailingEntryPoints.h"
#include "LogCapture.h"
#include "StaticControlObject.h"

namespace TesselFX {
namespace test {
namespace {

using bringup_test::Block;
using bringup_test::Frame;

class ControlFailuresTest : public StaticControlTest {
  protected:
    void SetUp() override { ASSERT_TRUE(Init()); }
};

TEST_F(ControlFailuresTest, UnknownModesAndAFlushWithoutWaitAreRefused) {
    LogCapture capture;
    EXPECT_FALSE(m_manager->SetActive(Settings(), 5, 9));
    EXPECT_FALSE(m_manager->SetSoundMode(Settings(), 7));
    EXPECT_FALSE(m_manager->SetOutputMode(Settings(), 7));
    EXPECT_FALSE(m_manager->SetOutputMode(Settings(), 2));  // (2, 1) is not a preset
    EXPECT_FALSE(m_manager->Flush(Settings()));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"Preset with output mode 5, sound mode 9 does not exist",
                                        "not supported sound mode 7", "not supported output mode 7",
                                        "not supported output mode 2",
                                        "Must call WaitForFlush before call Flush"}));
    EXPECT_TRUE(Take().empty());

    // All ones keeps the current mode: the pair is (1, 2). The first send is full, with the
    // blocks of the primed Music too.
    ASSERT_TRUE(m_manager->SetActive(Settings(), 0xFFFFFFFFu, 2));
    EXPECT_TRUE(capture.HasFragment("] : SetActive OM:4294967295 SM:2"));
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 0.0f}}), Block(4158, {{14, 1.0f}}),
                                    Block(4160, {{14, 0.5f}}), Block(4161, {{14, 9.0f}})})});
    ASSERT_TRUE(m_manager->SetActive(Settings(), 0xFFFFFFFFu, 0xFFFFFFFFu));
    EXPECT_TRUE(Take().empty());
}

TEST_F(ControlFailuresTest, AFailedSendKeepsTheNewStateForTheNextFullSend) {
    g_sendResult = -1;
    LogCapture capture;
    EXPECT_FALSE(m_manager->SetEnable(Settings(), false));
    EXPECT_FALSE(m_manager->SetBypass(Settings(), true));
    EXPECT_FALSE(m_manager->SetActive(Settings(), 1, 2));
    // A wake-up reports success whatever the send did.
    EXPECT_TRUE(m_manager->OnDspWakeUp(Settings()));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>(4, "SendBufferToDsp fail"));
    bool bypass = false;
    EXPECT_TRUE(m_manager->GetBypass(Settings(), bypass));
    EXPECT_TRUE(bypass);

    g_sendResult = 0;
    Take();
    ASSERT_TRUE(m_manager->WaitForFlush(Settings()));
    ASSERT_TRUE(m_manager->Flush(Settings()));
    // Movie, disabled and bypassed (parameter 1 at 1), in a full send.
    EXPECT_EQ(Take(), Frames{Frame({Block(4096, {{1, 1.0f}}), Block(4158, {{14, 1.0f}}),
                                    Block(4160, {{14, 0.5f}}), Block(4161, {{14, 9.0f}})})});

    // Parameters in 300 blocks make two frames; a send stops at the first that fails.
    std::map<unsigned int, double> many;
    for (unsigned g = 0; g < 300; ++g) many[1006 + 16 * g] = 5.5;
    g_sendResult = -1;
    EXPECT_FALSE(m_manager->SetParametersArray(Settings(), many, true));
    EXPECT_EQ(Take().size(), 1u);
}

TEST_F(ControlFailuresTest, AFailedConversionSendsNothingAndTheNextSendCarriesItsChange) {
    Take();
    {
        FailingEntryPoints fail("ZorbEffect_Control_Deferred_Update");
        EXPECT_FALSE(m_manager->SetParameter(Settings(), 1006, 5.5));
    }
    EXPECT_TRUE(Take().empty());
    // The DSP still gets 1006 (block 4158, input 14), with the next send beside that send's
    // own change, 1022 (block 4159, input 14).
    EXPECT_TRUE(m_manager->SetParameter(Settings(), 1022, 6.5));
    const Frames frames = Take();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_NE(frames[0].find(Block(4158, {{14, 5.5f}})), std::string::npos);
    EXPECT_NE(frames[0].find(Block(4159, {{14, 6.5f}})), std::string::npos);
}

TEST_F(ControlFailuresTest, SettingsOfAnotherVersionOrMissingSelectNothing) {
    zorbaudio_settings_t version1 = *Settings();
    version1.version = 1;
    LogCapture capture;
    EXPECT_FALSE(m_manager->SetEnable(&version1, false));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{
                  "CheckAudioCalSettings: Major API version mismatch. Provided = 1, Supported = 2",
                  "no valid ControlHandler"}));
    EXPECT_EQ(capture.Texts(4).size(), 4u);

    const std::vector<std::string> nullLines{
        "CheckAudioCalSettings: pZorbAudioSettings = NULL, please assign proper value.",
        "no valid ControlHandler"};
    capture.Clear();
    EXPECT_FALSE(m_manager->SetEnable(nullptr, false));
    EXPECT_EQ(capture.ErrorTexts(), nullLines);
    capture.Clear();
    zorbaudio_settings_t noRecord{2, nullptr};
    EXPECT_FALSE(m_manager->SetEnable(&noRecord, false));
    EXPECT_EQ(capture.ErrorTexts(), nullLines);
    EXPECT_TRUE(Take().empty());
}

// The signatures of the entry traces are written by hand in the manager.
TEST_F(ControlFailuresTest, EveryOperationStartsWithTheEntryTrace) {
    LogCapture capture;
    m_manager->SetVolume(Settings(), 1.0);
    std::map<uint32_t, CMeterValue> meters;
    m_manager->GetMeters(Settings(), {}, meters);
    m_manager->SetMessageBufferSize(100);
    EXPECT_TRUE(capture.Has(0,
                            "Entering function virtual bool "
                            "TesselFX::HalControlManagerImpl::SetVolume(const "
                            "zorbaudio_settings_t *, double)"));
    EXPECT_TRUE(capture.Has(0,
                            "Entering function virtual bool "
                            "TesselFX::HalControlManagerImpl::GetMeters(const "
                            "zorbaudio_settings_t *, const std::map<uint32_t, CMeterInfo> &, "
                            "std::map<uint32_t, CMeterValue> &)"));
    EXPECT_TRUE(capture.Has(0,
                            "Entering function virtual void "
                            "TesselFX::HalControlManagerImpl::SetMessageBufferSize(unsigned int)"));
}

/// Speaker (Music and Movie) and Headset (Music only) share instance 1; Ghost, on instance 3,
/// names a preset that the preset file lacks, so its handler has no preset handle. Streams 0
/// and 2 are of low priority, 1 and 3 of high.
class SharedInstanceTest : public StaticControlTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(Init(m_dir.Write("shared.ini",
                                     Config("Speaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1\n"
                                            "Headset=DEV:3,SR:rates,PRESET:Music,INSTANCE:1\n"
                                            "Ghost=DEV:4,SR:rates,PRESET:Ghost,INSTANCE:3",
                                            "[HAL_SUPPORTED_PRESETS]\nGhost=OM:5,SM:5\n"
                                            "[HAL_VOLUME_PRIORITY]\n"
                                            "AUDIO_STREAM_VOICE_CALL=VOLUME_PRIORITY_LOW\n"
                                            "AUDIO_STREAM_SYSTEM=VOLUME_PRIORITY_HIGH\n"
                                            "AUDIO_STREAM_RING=VOLUME_PRIORITY_LOW\n"
                                            "AUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"))));
        m_ghost.AddUint("INSTANCE", 3);
        Take();
    }
    const zorbaudio_settings_t* Ghost() { return m_ghost.GetSettings(); }
    ZorbAudioSettings m_ghost;
};

TEST_F(SharedInstanceTest, RoutesAndRefusalsWithTheirLines) {
    using Parameters = std::map<unsigned int, double>;
    double value = 0.0;
    bool state = false;
    std::string version;
    std::vector<char> chunk;
    Parameters parameters;
    std::map<uint32_t, CMeterValue> meters;
    TesselTuning::FullPreset preset;
    ZorbAudioSettings nobody;
    nobody.AddUint("INSTANCE", 2);
    const zorbaudio_stream_volume_t volumes[4] = {
        {0.5f, 1, {0, 0, 0}}, {0.75f, 0, {0, 0, 0}}, {0.25f, 2, {0, 0, 0}}, {1.0f, 0, {0, 0, 0}}};
    struct Row {
        const char* name;
        std::function<bool()> call;
        bool result;
        std::vector<std::string> errors;
        size_t frames;
        std::vector<std::string> logged = {};
    };
    const std::string law = bringup_test::LinkLaw(0, 1038, {{0.0f, 0.0f}, {1000.0f, 1000.0f}});
    HalControlManager& hal = *m_manager;
    const std::vector<std::string> noParameters{"no valid parameters could be got",
                                                "no parameter is found"};
    // clang-format off
    const Row rows[] = {
        // Every handler of the instance runs, also after one failed.
        {"set active where one lacks the preset", [&] { return hal.SetActive(Settings(), 1, 2); },
         false, {"Preset with output mode 1, sound mode 2 does not exist"}, 1},
        // A read asks the handlers in turn until one answers.
        {"parameter of Speaker",
         [&] { return hal.GetParameter(Settings(), 1054, value) && value == 9.0; }, true, {}, 0},
        {"parameter of Headset",
         [&] { return hal.GetParameter(Settings(), 1006, value) && value == 1.0; }, true, {}, 0},
        {"parameter of neither", [&] { return hal.GetParameter(Settings(), 7, value); }, false,
         {"parameter 7 is found"}, 0},
        {"chunk of neither", [&] { return hal.GetChunk(Settings(), 3, chunk); }, false,
         {"support index as ZBAC_LINKLAWS only", "support index as ZBAC_LINKLAWS only",
          "no chunk for index 3 is found"}, 0},
        {"meters of a DSP that answers nothing",
         [&] { return hal.GetMeters(Settings(), {}, meters); }, false,
         {"Hifi3ReplyBufferParser::ParseReplyMetersBuffer invalid id 0",
          "ParseReplyMetersBuffer fail",
          "Hifi3ReplyBufferParser::ParseReplyMetersBuffer invalid id 0",
          "ParseReplyMetersBuffer fail", "fail to get meters"}, 2},
        // Without a preset handle reads fail with the handler's line and the manager's.
        {"all parameters without a preset",
         [&] { return hal.GetParametersArray(Ghost(), {}, parameters); }, false, noParameters, 0},
        {"parameters without a preset",
         [&] { return hal.GetParametersArray(Ghost(), {5}, parameters); }, false, noParameters, 0},
        {"chunk without a preset", [&] { return hal.GetChunk(Ghost(), 1, chunk); }, false,
         {"no valid chunk could be got", "no chunk for index 1 is found"}, 0},
        {"link laws without a preset",
         [&] { return hal.GetLinkLawsParametersArray(Ghost(), parameters); }, false,
         {"no linklaws is valid"}, 0},
        // The volume table takes the active streams only; nobody selected is no error. The
        // frame is Headset's first send, which is full; Speaker had nothing to change.
        {"empty volume table", [&] { return hal.SetVolumeTable(Settings(), 0, volumes); }, false,
         {}, 0},
        {"volume table", [&] { return hal.SetVolumeTable(Settings(), 4, volumes); }, true, {}, 1},
        {"the volume of the table is source 0", [&] {
             return hal.GetLinkLawsSourceValue(Settings(), 0, value) &&
                    value == 20.0 * std::log10(0.5);
         }, true, {}, 0},
        {"volume table of nobody",
         [&] { return hal.SetVolumeTable(nobody.GetSettings(), 4, volumes); }, true, {}, 0},
        {"full preset for nobody",
         [&] { return hal.SetFullPresetFromTuning(nobody.GetSettings(), preset, false); }, false,
         {"no valid ControlHandler"}, 0},
        {"full preset of nobody", [&] { return hal.GetFullPreset(nobody.GetSettings(), preset); },
         false, {"no valid ControlHandler"}, 0},
        {"volume", [&] { return hal.SetVolume(Settings(), 0.1); }, true, {}, 0,
         {"Hifi3zControlHandler[sm=2;om=1;DEV=2;INSTANCE=1;] : SetVolume volume 0.100000 "
          "volumeDb -20.000000dB",
          "ControlHandler::SetVolume trigger LL for new volume, applying new preset."}},
        // What no exported function reaches: the DSP has no left-right swap; the first handler
        // tells the enable state and the tuning mode; the tool's writes start tuning.
        {"left-right swap", [&] { return hal.SetLrSwap(Settings(), true); }, true, {}, 0},
        {"enable", [&] { return hal.GetEnable(Settings(), state) && state; }, true, {}, 0},
        {"tuning mode", [&] { return hal.IsTuningMode(Settings(), state) && !state; }, true, {}, 0},
        {"the host's law lies over every preset", [&] {
             return hal.SetChunk(Settings(), 1, {law.begin(), law.end()}) &&
                    hal.GetLinkLawsParametersArray(Settings(), parameters) &&
                    parameters == Parameters{{1038, 0.5}};
         }, true, {}, 0},
        {"the tool's parameters start tuning",
         [&] { return hal.SetParametersArrayFromTuning(Settings(), {{1054, 4.0}}, false); }, true,
         {}, 2},
        {"tuning mode while tuning", [&] { return hal.IsTuningMode(Settings(), state) && state; },
         true, {}, 0},
        // Speaker's Movie takes 1054 back; Headset's Music has no value of its own for it.
        {"leave tuning", [&] { return hal.StartTuningMode(Settings(), false); }, true, {}, 1},
        {"version of a DSP that answers nothing",
         [&] { return hal.GetDspVersion(Settings(), version); }, false,
         {"wrong id 0", "wrong id 0"}, 2},
        {"tuning is valid", [&] { return hal.GetTuningModeValidation(Settings(), state) && state; },
         true, {}, 0},
        // The manager keeps a source value of a handler that took it: without a preset the
        // send fails, though the handler keeps the value for its tuning copy.
        {"link-law value", [&] { return hal.SetLinkLawsValue(Settings(), 2, -3.0, 0.5); }, true,
         {}, 0},
        {"source value kept",
         [&] { return hal.GetLinkLawsSourceValue(Settings(), 2, value) && value == -3.0; }, true,
         {}, 0},
        {"link-law value without a preset",
         [&] { return hal.SetLinkLawsValue(Ghost(), 0, -20.0, 30.0); }, false,
         {"no valid parameters could be got"}, 0},
        {"source value not kept", [&] { return hal.GetLinkLawsSourceValue(Ghost(), 0, value); },
         false, {"sourceIndex 0 is found"}, 0},
        // Tuning without a preset handle starts from the link-law values given before.
        {"leave tuning that never started", [&] { return hal.StartTuningMode(Ghost(), false); },
         true, {}, 0, {"tuning data does not exist"}},
        {"tuning without a preset", [&] { return hal.StartTuningMode(Ghost(), true); }, true, {},
         0},
        {"start tuning twice", [&] { return hal.StartTuningMode(Ghost(), true); }, true, {}, 0,
         {"tuning data already exists"}},
        {"the tool's law",
         [&] { return hal.SetChunkFromTuning(Ghost(), 1, {law.begin(), law.end()}); }, true, {},
         0},
        {"the tool's switch", [&] { return hal.SetParameterFromTuning(Ghost(), 2821, 1.0); }, true,
         {}, 1,
         {"Hifi3zControlHandler[sm=5;om=5;DEV=4;INSTANCE=3;] : SetParameterFromTuning 2821 = "
          "1.000000"}},
        {"parameters of the tuning copy", [&] {
             return hal.GetParametersArray(Ghost(), {}, parameters) &&
                    parameters == Parameters{{1038, 300.0}, {2800, 30.0}, {2821, 1.0}};
         }, true, {}, 0},
        {"leave tuning without a preset", [&] { return hal.StartTuningMode(Ghost(), false); },
         true, {}, 0},
        {"reads fail again", [&] { return hal.GetParametersArray(Ghost(), {}, parameters); },
         false, noParameters, 0},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        LogCapture capture;
        EXPECT_EQ(row.call(), row.result);
        EXPECT_EQ(capture.ErrorTexts(), row.errors);
        EXPECT_EQ(Take().size(), row.frames);
        for (const std::string& text : row.logged) EXPECT_TRUE(capture.Has(text)) << text;
    }
}

}  // namespace
}  // namespace test
}  // namespace TesselFX

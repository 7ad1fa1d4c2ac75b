// The control handler's refusals and failed sends through the manager of a real control object:
// the results, the frames, and the exact log lines.

#include <gtest/gtest.h>

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
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>(3, "SendBufferToDsp fail"));
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

}  // namespace
}  // namespace test
}  // namespace TesselFX

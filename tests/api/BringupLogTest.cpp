// The log lines of bring-up, through the static libraries.

#include <gtest/gtest.h>

#include "FailingEntryPoints.h"
#include "LogCapture.h"
#include "StaticControlObject.h"

namespace TesselFX {
namespace test {
namespace {

class BringupLogTest : public StaticControlTest {
  protected:
    std::string Version(const char* type) {
        std::string version = "unset";
        EXPECT_TRUE(m_manager->GetVersion(Settings(), type, version));
        return version;
    }
};

TEST_F(BringupLogTest, EachFailureHasItsLine) {
    LogCapture capture;
    EXPECT_FALSE(Init(m_configPath, nullptr));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"zorbaudio_initialize buffer_sender function is null."});

    // A converter that cannot size its work areas skips its control without a line of its own.
    {
        FailingEntryPoints fail("ZorbEffect_Control_Deferred_GetMaxNumCoefIDs");
        capture.Clear();
        EXPECT_FALSE(Init(m_configPath));
        EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"None controller is created"});
    }
    EXPECT_EQ(Version("dspkit"), "");
    EXPECT_TRUE(Take().empty());
}

TEST_F(BringupLogTest, SuccessMakesOneHandlerPerControlAndKeepsTheLibraryVersion) {
    LogCapture capture;
    ASSERT_TRUE(Init(m_dir.Write("two.ini", Config(kSpeaker + std::string("\nHeadset=DEV:3,SR:"
                                                                          "rates,PRESET:Movie")))));
    EXPECT_TRUE(capture.ErrorTexts().empty());
    EXPECT_TRUE(capture.Has(1, "make ControlHandler Headset"));
    EXPECT_TRUE(capture.Has(1, "make ControlHandler Speaker"));
    // Each handler dumps its settings when made.
    const std::string dump = "virtual void TesselFX::ControlHandler::Dump() const ====";
    for (const char* settings : {"DEV=2;INSTANCE=1;", "DEV=3;"}) {
        EXPECT_TRUE(capture.Has(1, settings)) << settings;
    }
    EXPECT_EQ(capture.Count(dump + " start ===="), 2u);
    EXPECT_EQ(capture.Count(dump + "  end  ===="), 2u);
    EXPECT_EQ(Version("dspkit"), "DspKitSim 1.00 stand-in");
    EXPECT_EQ(Version("halcontroller"), "1.553.0.0");
    EXPECT_EQ(MessageBufferSize(), 16000u - 36u);
    EXPECT_TRUE(Take().empty());
}

TEST_F(BringupLogTest, AFailedVersionQueryIsNotFatal) {
    FailingEntryPoints fail("ZorbEffect_Revision_Get");
    LogCapture capture;
    ASSERT_TRUE(Init(m_configPath));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{
                  "Hifi3zHelper::GetDspKitVersion failed to get ZorbEffect version"});
    EXPECT_EQ(Version("dspkit"), "");
}

TEST_F(BringupLogTest, FeaturesAreLoggedAndTheDumpFeatureTurnsOnTheBufferDump) {
    const std::string dumpOn =
        m_dir.Write("dump.ini", Config(kSpeaker,
                                       "[HAL_SUPPORTED_FEATURES]\nDumpBufferToDsp=1\n"
                                       "Surround=1\n"));
    const std::string dumpTwo =
        m_dir.Write("two.ini", Config(kSpeaker, "[HAL_SUPPORTED_FEATURES]\nDumpBufferToDsp=2\n"));
    {
        LogCapture capture;
        ASSERT_TRUE(Init(dumpTwo));
        ASSERT_TRUE(m_manager->SetActive(Settings(), 1, 2));
        EXPECT_EQ(Take().size(), 1u);
        EXPECT_FALSE(capture.Has(2, "RAW message buffer sent to DSP"));
    }
    {
        LogCapture capture;
        ASSERT_TRUE(Init(dumpOn));
        EXPECT_TRUE(capture.Has(1, "Initialize: Supported features count = 2"));
        EXPECT_TRUE(capture.Has(1, "Initialize: DumpBufferToDsp"));
        EXPECT_TRUE(capture.Has(1, "Initialize: Surround"));
        EXPECT_TRUE(m_manager->IsFeatureSupported("Surround"));
        EXPECT_FALSE(m_manager->IsFeatureSupported("surround"));
        EXPECT_FALSE(m_manager->IsFeatureSupported(nullptr));
        EXPECT_TRUE(capture.Has(1, "IsFeatureSupported: surround"));

        ASSERT_TRUE(m_manager->SetEnable(Settings(), false));
        EXPECT_EQ(Take().size(), 1u);
        // The first send is full: opcode 1, length 216, the blocks of coefficients 4096 (with
        // parameter 1 at 1.0), 4158 (input 14 at 1.0) and 4160 (input 14 at 0.5).
        const std::vector<std::string> head{"RAW message buffer sent to DSP", "index:0, 1",
                                            "index:1, d8", "index:2, 1000", "index:3, 10"};
        const std::vector<std::string> lines = capture.Texts(2);
        ASSERT_GE(lines.size(), head.size());
        EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + head.size()), head);
        EXPECT_TRUE(capture.Has(2, "index:5, 3f800000"));
        EXPECT_TRUE(capture.Has(2, "index:20, 103e"));
        EXPECT_TRUE(capture.Has(2, "index:36, 3f800000"));
        EXPECT_TRUE(capture.Has(2, "index:38, 1040"));
        EXPECT_TRUE(capture.Has(2, "index:54, 3f000000"));
        EXPECT_TRUE(capture.Has(2, "index:55, 0"));
        EXPECT_FALSE(capture.HasFragment("index:56,"));
    }
}

TEST(ZorbAudioCreateTest, CreateAndDestroyTheControlObject) {
    EXPECT_FALSE(zorbaudio_create(nullptr));
    void* handle = nullptr;
    ASSERT_TRUE(zorbaudio_create(&handle));
    ASSERT_NE(handle, nullptr);
    zorbaudio_destroy(&handle);
    EXPECT_NE(handle, nullptr);
    void* none = nullptr;
    zorbaudio_destroy(&none);
    zorbaudio_destroy(nullptr);
}

}  // namespace
}  // namespace test
}  // namespace TesselFX

// The log lines of bring-up, through the static libraries.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "../e2e/BringupFiles.h"
#include "LogCapture.h"
#include "api/zorbaudio_control_Hifi3z.h"
#include "api/zorbaudio_control_base.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManager.h"

namespace TesselFX {
namespace {

using bringup_test::PresetFile;
using bringup_test::PresetRecord;
using bringup_test::TempDir;

unsigned g_sends = 0;

int CountingSend(void*, CommonSettings*, const void*, uint32_t, void*, uint32_t*) {
    ++g_sends;
    return 0;
}

std::string Config(const std::string& controls, const std::string& extra = "",
                   const std::string& dspKitPath = DSPKIT_SIM_PATH) {
    return "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
           "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1\nMovie=OM:1,SM:2\n"
           "[HAL_SUPPORTED_CONTROLS]\n" +
           controls + "\n" + extra + "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" + dspKitPath + "\n";
}

const char* const kSpeaker = "Speaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1";

/// Sets DSPKIT_SIM_FAIL, the stand-in library's list of entry points to fail, for its lifetime.
struct FailingEntryPoint {
    explicit FailingEntryPoint(const char* name) { setenv("DSPKIT_SIM_FAIL", name, 1); }
    ~FailingEntryPoint() { unsetenv("DSPKIT_SIM_FAIL"); }
};

class BringupLogTest : public ::testing::Test {
  protected:
    BringupLogTest() {
        PresetRecord music;
        music.outputMode = 1;
        music.soundMode = 1;
        music.parameters = {{1, 0.0}, {1006, 1.0}};
        PresetRecord movie = music;
        movie.soundMode = 2;
        movie.parameters = {{1054, 9.0}};
        m_presetPath = m_dir.Write("system.zps", PresetFile({music, movie}));
        m_configPath = m_dir.Write("hal.ini", Config(kSpeaker));
        void* object = nullptr;
        zorbaudio_create(&object);
        m_manager.reset(static_cast<HalControlManager*>(object));
        m_settings.AddUint("INSTANCE", 1);
        g_sends = 0;
    }

    bool Init(const std::string& configPath, DspSendFunction sender = CountingSend) {
        return zorbaudio_initialize(m_manager.get(), m_presetPath.c_str(), "", configPath.c_str(),
                                    sender);
    }
    std::string Version(const char* type) {
        std::string version = "unset";
        EXPECT_TRUE(m_manager->GetVersion(m_settings.GetSettings(), type, version));
        return version;
    }

    TempDir m_dir;
    std::string m_presetPath;
    std::string m_configPath;
    std::unique_ptr<HalControlManager> m_manager;
    ZorbAudioSettings m_settings;
};

TEST_F(BringupLogTest, EachFailureHasItsLine) {
    test::LogCapture capture;
    EXPECT_FALSE(Init(m_configPath, nullptr));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"zorbaudio_initialize buffer_sender function is null."});

    capture.Clear();
    const std::string missing = m_dir.Path("missing.zps");
    EXPECT_FALSE(
        zorbaudio_initialize(m_manager.get(), missing.c_str(), "user.zps", "", CountingSend));
    EXPECT_TRUE(capture.Has(4, "load preset " + missing + " user.zps fail"));

    capture.Clear();
    EXPECT_FALSE(Init(m_dir.Path("missing.ini")));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"load conf " + m_dir.Path("missing.ini") + " fail"});

    capture.Clear();
    EXPECT_FALSE(Init(m_dir.Write("none.ini", Config(""))));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"None controller is created"});

    capture.Clear();
    EXPECT_FALSE(Init(m_dir.Write("nolib.ini", Config(kSpeaker, "", m_dir.Path("none.so")))));
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{
                  "Hifi3zHelper::BuildAndInitZorbEffect failed to initialize ZorbEffect",
                  "Hifi3zHelper::MakeControlHandlers failed to initialize ZorbEffect",
                  "None controller is created"}));

    // A format the library refuses fails the same way.
    capture.Clear();
    EXPECT_FALSE(Init(m_dir.Write("mono0.ini", Config(kSpeaker,
                                                      "[COEFS_CONVERTER_SETTING]\n"
                                                      "AudioFormatChannels=0\n"))));
    EXPECT_TRUE(
        capture.Has(4, "Hifi3zHelper::MakeControlHandlers failed to initialize ZorbEffect"));

    // A converter that cannot size its work areas skips its control without a line of its own.
    {
        FailingEntryPoint fail("ZorbEffect_Control_Deferred_GetMaxNumCoefIDs");
        capture.Clear();
        EXPECT_FALSE(Init(m_configPath));
        EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"None controller is created"});
    }
    EXPECT_EQ(Version("dspkit"), "");
    EXPECT_EQ(g_sends, 0u);
}

TEST_F(BringupLogTest, SuccessMakesOneHandlerPerControlAndKeepsTheLibraryVersion) {
    test::LogCapture capture;
    ASSERT_TRUE(Init(m_dir.Write("two.ini", Config(kSpeaker + std::string("\nHeadset=DEV:3,SR:"
                                                                          "rates,PRESET:Movie")))));
    EXPECT_TRUE(capture.ErrorTexts().empty());
    EXPECT_TRUE(capture.Has(1, "make ControlHandler Headset"));
    EXPECT_TRUE(capture.Has(1, "make ControlHandler Speaker"));
    EXPECT_EQ(Version("dspkit"), "DspKitSim 1.00 stand-in");
    EXPECT_EQ(Version("halcontroller"), "1.553.0.0");
    EXPECT_EQ(MessageBufferSize(), 16000u - 36u);
    EXPECT_EQ(g_sends, 0u);
}

TEST_F(BringupLogTest, AFailedVersionQueryIsNotFatal) {
    FailingEntryPoint fail("ZorbEffect_Revision_Get");
    test::LogCapture capture;
    ASSERT_TRUE(Init(m_configPath));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{
                  "Hifi3zHelper::GetDspKitVersion failed to get ZorbEffect version"});
    EXPECT_EQ(Version("dspkit"), "");
}

TEST_F(BringupLogTest, DumpFeatureTurnsOnTheBufferDump) {
    const std::string dumpOn =
        m_dir.Write("dump.ini", Config(kSpeaker, "[HAL_SUPPORTED_FEATURES]\nDumpBufferToDsp=1\n"));
    const std::string dumpTwo =
        m_dir.Write("two.ini", Config(kSpeaker, "[HAL_SUPPORTED_FEATURES]\nDumpBufferToDsp=2\n"));
    {
        test::LogCapture capture;
        ASSERT_TRUE(Init(dumpTwo));
        ASSERT_TRUE(m_manager->SetActive(m_settings.GetSettings(), 1, 2));
        EXPECT_EQ(g_sends, 1u);
        EXPECT_FALSE(capture.Has(2, "RAW message buffer sent to DSP"));
    }
    {
        test::LogCapture capture;
        ASSERT_TRUE(Init(dumpOn));
        ASSERT_TRUE(m_manager->SetEnable(m_settings.GetSettings(), false));
        EXPECT_EQ(g_sends, 2u);
        // The first send is full: opcode 1, length 144, the blocks of coefficients 4096 (with
        // parameter 1 at 1.0) and 4158 (input 14 at 1.0).
        const std::vector<std::string> head{"RAW message buffer sent to DSP", "index:0, 1",
                                            "index:1, 90", "index:2, 1000", "index:3, 10"};
        const std::vector<std::string> lines = capture.Texts(2);
        ASSERT_GE(lines.size(), head.size());
        EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + head.size()), head);
        EXPECT_TRUE(capture.Has(2, "index:5, 3f800000"));
        EXPECT_TRUE(capture.Has(2, "index:20, 103e"));
        EXPECT_TRUE(capture.Has(2, "index:36, 3f800000"));
        EXPECT_TRUE(capture.Has(2, "index:37, 0"));
        EXPECT_FALSE(capture.HasFragment("index:38,"));
    }
}

TEST_F(BringupLogTest, AConversionErrorOfTheConfigurationPassesOut) {
    const std::string bad =
        m_dir.Write("bad.ini", Config(kSpeaker, "[HAL_SUPPORTED_PRESETS]\nGame=OM:2,SM:1,XX:3\n"));
    EXPECT_THROW(Init(bad), std::out_of_range);
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
}  // namespace TesselFX

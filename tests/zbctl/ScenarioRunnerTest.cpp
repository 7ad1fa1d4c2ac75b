#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "WavFile.h"
#include "ZbctlTestSupport.h"

namespace TesselFX {
namespace zbctl {
namespace {

using Json = nlohmann::json;

TEST(ScenarioRunner, AudioAfterBypassEqualsTheInput) {
    test::TempDir dir;
    const std::string scenario = dir.Write("bypass.scenario", "set_active 1 2\nset_bypass 1\n");
    const std::string input = std::string(ZBCTL_BUILD_EXAMPLES_DIR) + "/example_input.wav";
    const std::string output = dir.Path("out.wav");
    const test::CommandResult result =
        test::RunZbctl("run --scenario " + scenario + " --input " + input + " --output " + output);
    ASSERT_EQ(result.status, 0) << result.out;
    const AudioBuffer in = ReadWav(input);
    const AudioBuffer out = ReadWav(output);
    ASSERT_EQ(out.channels, in.channels);
    ASSERT_EQ(out.samples.size(), 2 * in.samples.size());  // one segment per step
    const std::vector<float> first(out.samples.begin(),
                                   out.samples.begin() + static_cast<long>(in.samples.size()));
    const std::vector<float> second(out.samples.begin() + static_cast<long>(in.samples.size()),
                                    out.samples.end());
    EXPECT_NE(first, in.samples);  // the movie preset is audible
    EXPECT_EQ(second, in.samples);
}

// The host side against a library that sends known frames: trace, DSP and audio.
class ScenarioRunnerHostSide : public ::testing::Test {
  protected:
    /// zbctl run on the fake library with scenario (by default the one below) and extra options.
    test::CommandResult Run(const std::string& extra = "", const std::string& scenario = "") const {
        return test::RunZbctl("run --library " + std::string(ZBCTL_FAKE_HAL) + " --scenario " +
                              (scenario.empty() ? m_scenario : scenario) + " " + extra);
    }

    test::TempDir m_dir;
    std::string m_scenario = m_dir.Write("host.scenario",
                                         "set_volume 0.5\n"
                                         "set_bypass 1   # off\n"
                                         "get_version dsp\n"
                                         "set_bypass 0\n"
                                         "instance 1\n"
                                         "set_volume 0.25\n"
                                         "set_output_mode 3\n");
};

TEST_F(ScenarioRunnerHostSide, TracesCallsFramesRepliesAndNotifications) {
    const test::CommandResult result = Run();
    ASSERT_EQ(result.status, 0) << result.out;
    const size_t start = result.out.find("zb_create");
    ASSERT_NE(start, std::string::npos);
    EXPECT_EQ(result.out.substr(start),
              "zb_create = 1\n"
              "zb_initialize = 1\n"
              "zb_register_notifier 0 = 1\n"
              "zb_register_notifier 1 = 1\n"
              "line 1: set_volume 0.5\n"
              "    frame to instance 0: opcode 1 (set coefficients), 20 bytes, 1 block: 10\n"
              "    = 1\n"
              "line 2: set_bypass 1\n"
              "    frame to instance 0: opcode 1 (set coefficients), 80 bytes, 1 block: 4096\n"
              "    notification: bypass=1\n"
              "    = 1\n"
              "line 3: get_version dsp\n"
              "    frame to instance 0: opcode 5 (get version), 4 bytes; reply 6, 31 bytes "
              "\"DspKitSim 1.00 stand-in\"\n"
              "    = 1 \"DspKitSim 1.00 stand-in\"\n"
              "line 4: set_bypass 0\n"
              "    frame to instance 0: opcode 1 (set coefficients), 80 bytes, 1 block: 4096\n"
              "    notification: bypass=0\n"
              "    = 1\n"
              "line 5: instance 1 = 1\n"
              "line 6: set_volume 0.25\n"
              "    frame to instance 1: opcode 1 (set coefficients), 20 bytes, 1 block: 10\n"
              "    = 1\n"
              "line 7: set_output_mode 3 = 0\n"
              "zb_destroy\n");

    const Json trace = Json::parse(Run("--json").out);
    EXPECT_EQ(trace["calls"][5]["call"], "set_bypass 1");
    EXPECT_EQ(
        trace["calls"][5]["events"],
        Json::parse(
            R"([{"frame": {"instance": 0, "opcode": 1, "size": 80, "blocks": [4096], "status": 0}},
                              {"notification": "bypass=1"}])"));
}

TEST_F(ScenarioRunnerHostSide, TracesTuningRepliesAndNotificationsDecoded) {
    const std::string scenario = m_dir.Write("tuning.scenario",
                                             "register_notifier\n"
                                             "tuning on\n"
                                             "get GetParameter 131\n"
                                             "get GetEnable 0\n"
                                             "get GetParameter 7\n");
    const test::CommandResult result = Run("", scenario);
    ASSERT_EQ(result.status, 0) << result.out;
    const size_t start = result.out.find("line 1:");
    ASSERT_NE(start, std::string::npos);
    EXPECT_EQ(result.out.substr(start),
              "line 1: register_notifier = 1\n"
              "line 2: tuning on\n"
              "    notification: dsp_instance=0;tessel_data=NAAAAAAAAAACAAAABwAAAAQAAAAoAAAA\n"
              "    instance 0: Multiple 0 2 7 28000000\n"
              "    notification: dsp_instance=0;tessel_data=NAAAAAEAAAACAAAABwAAAAQAAAABAAAA\n"
              "    instance 0: Multiple 1 2 7 01000000\n"
              "    merged: UpdateEnable 1\n"
              "    = 1\n"
              "line 3: get GetParameter 131\n"
              "    reply: ReplyParameter 131 -3.5\n"
              "    = 1\n"
              "line 4: get GetEnable 0\n"
              "    reply: Multiple 0 2 7 28000000\n"
              "    reply: Multiple 1 2 7 01000000\n"
              "    merged: UpdateEnable 1\n"
              "    = 1\n"
              "line 5: get GetParameter 7 = 0\n"
              "zb_destroy\n");

    const Json trace = Json::parse(Run("--json", scenario).out);
    EXPECT_EQ(trace["calls"][5]["call"], "get GetParameter 131");
    EXPECT_EQ(trace["calls"][5]["events"],
              Json::parse(R"([{"reply": "ReplyParameter 131 -3.5"}])"));
}

TEST_F(ScenarioRunnerHostSide, RendersOneSegmentPerStepThroughTheCoefficientsInForce) {
    const std::string input = std::string(ZBCTL_BUILD_EXAMPLES_DIR) + "/example_input.wav";
    const std::string output = m_dir.Path("out.wav");
    ASSERT_EQ(Run("--input " + input + " --output " + output).status, 0);
    const AudioBuffer in = ReadWav(input);
    const AudioBuffer out = ReadWav(output);
    EXPECT_EQ(out.sampleRate, in.sampleRate);
    ASSERT_EQ(out.samples.size(), 6 * in.samples.size());  // the instance line renders nothing
    std::vector<float> half = in.samples;
    for (float& sample : half) sample *= 0.5f;
    const size_t length = in.samples.size();
    const auto segment = [&](size_t i) {
        return std::vector<float>(out.samples.begin() + static_cast<long>(i * length),
                                  out.samples.begin() + static_cast<long>((i + 1) * length));
    };
    EXPECT_EQ(segment(0), half);        // gain 0.5
    EXPECT_EQ(segment(1), in.samples);  // bypass
    EXPECT_EQ(segment(2), in.samples);
    EXPECT_EQ(segment(3), half);  // bypass off
    EXPECT_EQ(segment(4), half);  // instance 1 changed, instance 0 renders
    EXPECT_EQ(segment(5), half);
}

TEST_F(ScenarioRunnerHostSide, ReportsAFailedInitialization) {
    test::CommandResult result = Run("--system-presets /nonexistent.zps");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.out.find("zb_initialize = 0\n# zb_initialize failed:"), std::string::npos)
        << result.out;
    EXPECT_EQ(result.out.find("line 1"), std::string::npos);
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX

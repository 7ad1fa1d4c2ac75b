#include <gtest/gtest.h>

#include "Scenario.h"
#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {
namespace {

std::string ErrorOf(const std::string& text) {
    try {
        ParseScenario(text, "s.txt");
    } catch (const ZbctlError& e) {
        return e.what();
    }
    return "";
}

TEST(Scenario, ParsesEveryCallWithItsInstanceAndLine) {
    const auto steps = ParseScenario(
        "# setup\n"
        "set_active 1 2\n"
        "\n"
        "  set_volume   0.25   # quiet\n"
        "set_orientation -90\n"
        "set_parameter 110 -3\n"
        "instance 1\n"
        "set_enable 0\n"
        "set_bypass 1\n"
        "wait_for_flush\n"
        "flush\n"
        "dsp_wakeup\n"
        "set_active -1 4294967295\n"
        "get_version dspkit\n"
        "set_linklaws_value 0 0.5 50\n",
        "s.txt");
    ASSERT_EQ(steps.size(), 13u);
    EXPECT_EQ(steps[0].call, ScenarioCall::kSetActive);
    EXPECT_EQ(steps[0].line, 2u);
    EXPECT_EQ(steps[0].numbers, (std::vector<double>{1, 2}));
    EXPECT_EQ(steps[1].line, 4u);
    EXPECT_EQ(steps[1].source, "set_volume 0.25");
    EXPECT_EQ(steps[1].numbers, std::vector<double>{0.25});
    EXPECT_EQ(steps[2].numbers, std::vector<double>{-90});
    EXPECT_EQ(steps[3].numbers, (std::vector<double>{110, -3}));
    EXPECT_EQ(steps[3].instance, 0u);
    EXPECT_EQ(steps[4].call, ScenarioCall::kInstance);
    EXPECT_EQ(steps[5].call, ScenarioCall::kSetEnable);
    EXPECT_EQ(steps[5].instance, 1u);
    EXPECT_EQ(steps[5].numbers, std::vector<double>{0});
    EXPECT_EQ(steps[6].call, ScenarioCall::kSetBypass);
    EXPECT_EQ(steps[7].call, ScenarioCall::kWaitForFlush);
    EXPECT_EQ(steps[8].call, ScenarioCall::kFlush);
    EXPECT_EQ(steps[9].call, ScenarioCall::kDspWakeup);
    // -1 keeps the current mode; it travels as all bits set.
    EXPECT_EQ(steps[10].numbers, (std::vector<double>{4294967295.0, 4294967295.0}));
    EXPECT_EQ(steps[11].text, "dspkit");
    EXPECT_EQ(steps[12].numbers, (std::vector<double>{0, 0.5, 50}));
    EXPECT_EQ(steps[12].instance, 1u);
}

TEST(Scenario, ErrorsNameTheLineAndTheFault) {
    EXPECT_EQ(ErrorOf("flush\n\nset_volum 0.5\n"), "s.txt:3: unknown call \"set_volum\"");
    EXPECT_EQ(ErrorOf("set_active 1\n"),
              "s.txt:1: set_active takes 2 argument(s), 1 given; usage: set_active OUTPUT_MODE "
              "SOUND_MODE");
    EXPECT_EQ(ErrorOf("flush now\n"), "s.txt:1: flush takes 0 argument(s), 1 given; usage: flush");
    EXPECT_EQ(ErrorOf("# c\nset_volume loud\n"),
              "s.txt:2: \"loud\" is not a number; usage: set_volume LINEAR_VOLUME");
    EXPECT_EQ(ErrorOf("set_volume 0.5x\n"),
              "s.txt:1: \"0.5x\" is not a number; usage: set_volume LINEAR_VOLUME");
    EXPECT_EQ(ErrorOf("set_volume nan\n"),
              "s.txt:1: \"nan\" is not a number; usage: set_volume LINEAR_VOLUME");
    EXPECT_EQ(ErrorOf("set_bypass 2\n"), "s.txt:1: \"2\" is not 0 or 1; usage: set_bypass 0|1");
    EXPECT_EQ(ErrorOf("set_parameter -1 0\n"),
              "s.txt:1: \"-1\" is not a whole number from 0 to 4294967295; usage: set_parameter ID "
              "VALUE");
    EXPECT_EQ(
        ErrorOf("set_parameter 1.5 0\n"),
        "s.txt:1: \"1.5\" is not a whole number from 0 to 4294967295; usage: set_parameter ID "
        "VALUE");
    EXPECT_EQ(ErrorOf("set_output_mode 4294967296\n"),
              "s.txt:1: \"4294967296\" is not a whole number from 0 to 4294967295; usage: "
              "set_output_mode OUTPUT_MODE");
    EXPECT_EQ(
        ErrorOf("set_orientation 2147483648\n"),
        "s.txt:1: \"2147483648\" is not a whole number from -2147483648 to 2147483647; usage: "
        "set_orientation DEGREES");
    EXPECT_EQ(ErrorOf("set_orientation 0x10\n"),
              "s.txt:1: \"0x10\" is not a whole number from -2147483648 to 2147483647; usage: "
              "set_orientation DEGREES");
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX

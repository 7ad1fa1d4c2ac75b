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
    const std::string kReal = " is not a number; usage: set_volume LINEAR_VOLUME";
    const std::string kUnsigned = " is not a whole number from 0 to 4294967295; usage: ";
    const std::string kInteger =
        " is not a whole number from -2147483648 to 2147483647; usage: "
        "set_orientation DEGREES";
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"set_volum 0.5", "unknown call \"set_volum\""},
        {"set_active 1",
         "set_active takes 2 argument(s), 1 given; usage: set_active OUTPUT_MODE SOUND_MODE"},
        {"flush now", "flush takes 0 argument(s), 1 given; usage: flush"},
        {"get", "get takes 1 argument(s), 0 given; usage: get MESSAGE FIELDS..."},
        // A message's own fault ends with the message's usage.
        {"set SetParameter 131", "too few fields; usage: SetParameter ID VALUE"},
        {"tuning maybe", "\"maybe\" is not on or off; usage: tuning on|off"},
        {"set_bypass 2", "\"2\" is not 0 or 1; usage: set_bypass 0|1"},
        {"set_volume loud", "\"loud\"" + kReal},
        {"set_volume 0.5x", "\"0.5x\"" + kReal},
        {"set_volume nan", "\"nan\"" + kReal},
        {"set_parameter -1 0", "\"-1\"" + kUnsigned + "set_parameter ID VALUE"},
        {"set_parameter 1.5 0", "\"1.5\"" + kUnsigned + "set_parameter ID VALUE"},
        {"set_output_mode 4294967296",
         "\"4294967296\"" + kUnsigned + "set_output_mode OUTPUT_MODE"},
        {"set_orientation 2147483648", "\"2147483648\"" + kInteger},
        {"set_orientation 0x10", "\"0x10\"" + kInteger},
    };
    for (const auto& [line, error] : rows) EXPECT_EQ(ErrorOf(line + "\n"), "s.txt:1: " + error);
    EXPECT_EQ(ParseScenario("get GetParameter 131 # read back\n", "s")[0].frame,
              (std::vector<char>{10, 0, 0, 0, static_cast<char>(0x83), 0, 0, 0}));
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX

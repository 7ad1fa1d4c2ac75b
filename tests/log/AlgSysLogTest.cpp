#include <gtest/gtest.h>

#include <atomic>

#include "LogCapture.h"
#include "LogTestHelpers.h"
#include "log/AlgSysLog.h"
#include "log/TesselLog.h"

namespace TesselFX {
namespace {

using test::LogCapture;
using test::WithoutLineNumbers;

std::vector<std::string> LevelsAndTexts(const LogCapture& capture) {
    std::vector<std::string> result;
    for (const auto& line : capture.Lines()) {
        EXPECT_EQ(line.tag, "TESSEL_LOG_DspKit");
        result.push_back(std::to_string(line.level) + " " +
                         WithoutLineNumbers({line.text}).front());
    }
    return result;
}

TEST(AlgSysLog, SeverityChoosesTheLevelAndTheTagLevelFilters) {
    LogCapture capture(2);
    std::atomic<uint32_t>& dspKit = TesselLog::Get().levels[TESSEL_LOG_DspKit];
    auto all = [] {
        AlgSysLog("caller.c", 7, 0, "Meter", "value %d", 0);
        AlgSysLog("caller.c", 7, 1, "Meter", "value %d", 1);
        AlgSysLog("caller.c", 7, 2, "Meter", "value %d", 2);
        AlgSysLog("caller.c", 7, 3, "Meter", "value %d", 3);
        AlgSysLog("caller.c", 7, 4, "Meter", "value %d", 4);
        AlgSysLog("caller.c", -1, -1, "Meter", "value %d", -1);
    };
    // Levels fall with the severity, so each tag level lets a prefix of these through.
    const std::vector<std::string> everything = {
        "4 AlgSysLog.cpp:N, ",     "4 [Meter] (7) value 0", "3 [Meter] (7) value 1",
        "2 [Meter] (7) value 2",   "1 [Meter] (7) value 3", "0 [Meter] (7) value 4",
        "0 [Meter] (-1) value -1",
    };
    for (const auto& [tagLevel, written] :
         std::vector<std::pair<uint32_t, size_t>>{{2, 4}, {0, 7}, {4, 2}, {3, 3}}) {
        capture.Clear();
        dspKit = tagLevel;
        all();
        EXPECT_EQ(LevelsAndTexts(capture),
                  std::vector<std::string>(everything.begin(), everything.begin() + written))
            << tagLevel;
    }
    EXPECT_FALSE(capture.HasFragment("caller.c"));

    capture.Clear();
    dspKit = 3;
    AlgSysLog(nullptr, 1, 1, nullptr, nullptr);
    const std::string longText(1500, 'z');
    AlgSysLog("f", 2, 1, "M", "%s", longText.c_str());
    EXPECT_EQ(capture.Texts(),
              (std::vector<std::string>{"[] (1) ", "[M] (2) " + longText.substr(0, 999)}));
}

}  // namespace
}  // namespace TesselFX

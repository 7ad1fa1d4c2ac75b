#include <gtest/gtest.h>

#include "LogCapture.h"
#include "log/TesselLog.h"

namespace TesselFX {
namespace {

using test::LogCapture;

TEST(TesselLogFront, GuardSkipsArgumentsOfLinesNotPrinted) {
    LogCapture capture(2);
    int evaluated = 0;
    auto count = [&] { return ++evaluated; };
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "hidden %d", count());
    TESSEL_LOG(2, TESSEL_LOG_FXModule, "shown %d", count());
    EXPECT_EQ(evaluated, 1);
    ASSERT_EQ(capture.Texts(), std::vector<std::string>{"shown 1"});
    EXPECT_EQ(capture.Lines()[0].tag, "TESSEL_LOG_FXModule");
}

TEST(TesselLogFront, ErrorIsAPairWithTheSourcePosition) {
    LogCapture capture;
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "handle %p is invalid", nullptr);
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].level, 4u);
    EXPECT_NE(lines[0].text.find("TesselLogFrontTest.cpp:"), std::string::npos);
    EXPECT_EQ(lines[0].text.substr(lines[0].text.size() - 2), ", ");
    EXPECT_EQ(lines[1].text, "handle (nil) is invalid");
}

}  // namespace
}  // namespace TesselFX

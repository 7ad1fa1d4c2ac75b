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

}  // namespace
}  // namespace TesselFX

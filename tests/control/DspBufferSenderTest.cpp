// The buffer dump of the sender. What the host's function receives (handle, instance, bytes,
// reply room of 16000) is shown end to end in tests/e2e/BringupTest.cpp, and the dump of a
// whole frame through the real library in tests/api/BringupLogTest.cpp.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "control/DspBufferSender.h"

namespace TesselFX {
namespace {

int AcceptingSend(void*, CommonSettings*, const void*, uint32_t, void*, uint32_t*) { return 0; }

TEST(DspBufferSenderTest, DumpShowsWholeWordsInHexAtInfoLevelOnly) {
    auto settings = std::make_shared<CommonSettings>();
    DspBufferSender sender(nullptr, AcceptingSend, true);
    {
        test::LogCapture capture;
        // Two words and a rest of two bytes, which is not shown.
        const std::vector<char> buffer{1,
                                       0,
                                       0,
                                       0,
                                       0x00,
                                       static_cast<char>(0xEF),
                                       static_cast<char>(0xCD),
                                       static_cast<char>(0xAB),
                                       7,
                                       7};
        ASSERT_TRUE(sender.Send(settings, buffer));
        EXPECT_EQ(capture.Texts(2), (std::vector<std::string>{"RAW message buffer sent to DSP",
                                                              "index:0, 1", "index:1, abcdef00"}));
        capture.Clear();
        std::vector<char> reply;
        ASSERT_TRUE(sender.SendAndReceive(settings, {1, 2, 3, 4, 5, 6}, reply));
        EXPECT_EQ(capture.Texts(2),
                  (std::vector<std::string>{"RAW message buffer sent to DSP", "index:0, 4030201"}));
    }
    test::LogCapture above(3);
    ASSERT_TRUE(sender.Send(settings, {1, 0, 0, 0}));
    EXPECT_TRUE(above.Texts().empty());
}

}  // namespace
}  // namespace TesselFX

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {
namespace {

std::string Text(const std::vector<char>& bytes) { return std::string(bytes.begin(), bytes.end()); }

TEST(EnvelopeHeaderTest, HeaderNamesTheInstanceAndSizeFitsTheWidestOne) {
    EXPECT_EQ(Text(ZbAocTuningProtocol::BuildHeader(7)), "dsp_instance=7;tessel_data=");
    EXPECT_EQ(Text(ZbAocTuningProtocol::BuildHeader(4294967295u)),
              "dsp_instance=4294967295;tessel_data=");
    EXPECT_EQ(ZbAocTuningProtocol::HeaderSize(), 36u);
    EXPECT_EQ(ZbAocTuningProtocol::HeaderSize(), 36u);
}

}  // namespace
}  // namespace TesselFX

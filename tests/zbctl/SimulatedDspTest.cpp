#include <gtest/gtest.h>

#include <cstring>

#include "DspFrames.h"
#include "SimulatedDsp.h"
#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {
namespace {

using test::Block;
using test::Frame;
using test::PassThroughSwitch;

class SimulatedDspTest : public ::testing::Test {
  protected:
    int Send(const std::vector<unsigned char>& request,
             std::vector<unsigned char>* reply = nullptr) {
        uint32_t size = reply ? static_cast<uint32_t>(reply->size()) : 0;
        const int status = m_dsp.Handle(request.data(), static_cast<uint32_t>(request.size()),
                                        reply ? reply->data() : nullptr, &size, m_exchange);
        if (reply && status == 0) reply->resize(size);
        return status;
    }

    SimulatedDsp m_dsp{ZBCTL_DSPKIT_LIBRARY, 48000, 2, 4};
    DspExchange m_exchange;
};

TEST_F(SimulatedDspTest, RefusesMalformedFrames) {
    auto frame = Frame({Block(10, {0.5f})});
    frame[4] = 4;  // payload length 4 in a frame of 12 payload bytes
    EXPECT_EQ(Send(frame), -1);
    EXPECT_EQ(m_exchange.error, "payload length 4 differs from the frame's 12");
    EXPECT_EQ(Send(Frame({Block(10, {0.5f}), Block(77, {1})})), -1);
    EXPECT_EQ(m_exchange.blockIds, std::vector<uint32_t>{10});
    EXPECT_EQ(m_exchange.error, "block at payload offset 12 refused by the effect");
    EXPECT_EQ(Send({9, 0, 0, 0}), -1);
    EXPECT_EQ(m_exchange.error, "unknown opcode");
    EXPECT_EQ(Send({1, 0}), -1);
    EXPECT_EQ(m_exchange.error, "request shorter than its opcode");
    // Every cut of a valid frame is refused or served, and never read past its end.
    const auto whole =
        Frame({Block(1, {1, 0, 0, 0, 0}), Block(4096, PassThroughSwitch(0)), Block(10, {1})});
    for (size_t size = 0; size < whole.size(); ++size) {
        std::vector<unsigned char> cut(whole.begin(), whole.begin() + static_cast<long>(size));
        if (size >= 8) cut[4] = static_cast<unsigned char>(size - 8);
        EXPECT_EQ(Send(cut), size == 8 || size == 36 || size == 108 ? 0 : -1) << size;
    }
}

TEST_F(SimulatedDspTest, AnswersMeters) {
    const std::vector<float> input = {0.5f, -0.25f};
    std::vector<float> output(2);
    m_dsp.Process(input.data(), output.data(), 1);
    std::vector<unsigned char> reply(16000);
    EXPECT_EQ(Send({4, 0, 0, 0}, &reply), 0);
    // Reply 3, the meter buffer of 36 bytes: four meters (peak and level of two channels).
    ASSERT_EQ(reply.size(), 44u);
    EXPECT_EQ(std::vector<unsigned char>(reply.begin(), reply.begin() + 12),
              (std::vector<unsigned char>{3, 0, 0, 0, 36, 0, 0, 0, 4, 0, 0, 0}));
    float peak;
    std::memcpy(&peak, reply.data() + 12, 4);
    EXPECT_EQ(peak, 0.5f);

    std::vector<unsigned char> small(30);
    EXPECT_EQ(Send({5, 0, 0, 0}, &small), -1);
    EXPECT_EQ(m_exchange.error, "no room for the reply");
    EXPECT_EQ(Send({5, 0, 0, 0}), -1);
}

TEST(SimulatedDsp, ReportsALibraryThatDoesNotLoad) {
    EXPECT_THROW(SimulatedDsp("/nonexistent/libDspKit.so", 48000, 2, 4), ZbctlError);
}

}  // namespace
}  // namespace zbctl
}  // namespace TesselFX

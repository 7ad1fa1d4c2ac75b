// Meters and the DSP version through the object graph of bring-up: the handler's request goes
// through the sender to a second instance of the stand-in library, which plays the DSP, and
// its meter buffer comes back through the handler's host copy as values. The tool's side is
// played by the message classes: a request frame in, a reply frame out.

#include <gtest/gtest.h>

#include <cstring>

#include "../dsp/Bytes.h"
#include "DspKitSim.h"
#include "LogCapture.h"
#include "StaticControlObject.h"
#include "dsp/ZorbEffectWrapper.h"
#include "protocol/RequestMetersMessageData.h"
#include "protocol/UpdateMetersMessageData.h"

namespace TesselFX {
namespace test {
namespace {

using bringup_test::PutF32;
using bringup_test::PutU32;

/// The DSP instance the sender talks to; set by the fixture.
IZorbEffectWrapper* g_dsp = nullptr;

/// The host's buffer_sender: hands every request to the DSP instance and copies its answer.
int PlayDsp(void*, CommonSettings*, const void* data, uint32_t size, void* reply,
            uint32_t* replySize) {
    unsigned room = replySize != nullptr ? *replySize : 0;
    if (g_dsp == nullptr || !g_dsp->Message(data, size, reply, &room)) return -1;
    if (replySize != nullptr) *replySize = room;
    return 0;
}

/// One meter of the DSP's meter buffer: u32 count, then per meter f32 value, i32 flag.
struct DspMeter {
    float value;
    int32_t flag;
};

class MetersEndToEnd : public StaticControlTest {
  protected:
    void SetUp() override {
        m_dsp = ZorbEffectWrapper::Create(DSPKIT_SIM_PATH);
        ASSERT_NE(m_dsp, nullptr);
        ASSERT_TRUE(m_dsp->Initialize(48000, 2, 4));
        g_dsp = m_dsp.get();
        ASSERT_TRUE(Init(m_configPath, PlayDsp));
    }
    void TearDown() override { g_dsp = nullptr; }

    /// Runs stereo audio through the DSP, which raises every meter's flag.
    void Play(std::vector<float> samples) {
        ZorbStream_t stream = {samples.data(), static_cast<uint32_t>(samples.size() / 2)};
        ZorbStream_t* const streams[] = {&stream};
        ASSERT_TRUE(m_dsp->Process(streams, streams));
    }

    /// What the DSP's meter buffer holds now.
    std::vector<DspMeter> DspMeters() {
        std::vector<char> buffer(4 + 8 * 4);
        unsigned size = static_cast<unsigned>(buffer.size());
        EXPECT_TRUE(m_dsp->Meters_GetBuffer(buffer.data(), &size));
        EXPECT_EQ(size, buffer.size());
        std::vector<DspMeter> meters(4);
        for (size_t i = 0; i < meters.size(); ++i) {
            std::memcpy(&meters[i].value, buffer.data() + 4 + 8 * i, 4);
            std::memcpy(&meters[i].flag, buffer.data() + 8 + 8 * i, 4);
        }
        return meters;
    }

    /// The tool's round: a request frame in, the reply frame of the values out.
    std::vector<char> Round(const std::vector<char>& requestFrame) {
        RequestMetersMessageData request;
        EXPECT_TRUE(
            request.SetBuffer(requestFrame.data(), static_cast<unsigned>(requestFrame.size())));
        std::map<uint32_t, CMeterValue> values;
        EXPECT_TRUE(m_manager->GetMeters(Settings(), request.GetMeterInfos(), values));
        return UpdateMetersMessageData(values).GetBuffer();
    }

    std::shared_ptr<IZorbEffectWrapper> m_dsp;
};

// Four meters, each keyed by its index: index 0 as float (mode 1, no reset value), index 1 as
// integer with reset value 77, index 3 of type 3 with reset value 5, and index 9, which the
// library does not have, as float with reset value 0x3FC00000 (1.5f).
const std::vector<char> kRequest =
    Bytes({36, 0, 0, 0, 4, 0, 0, 0,                                          //
           12, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,                  //
           16, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 77, 0, 0,    0,  //
           16, 0, 0, 0, 3, 0, 0, 0, 3, 0, 0, 0, 3, 0, 0, 0, 5,  0, 0,    0,  //
           16, 0, 0, 0, 9, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 0,  0, 0xC0, 0x3F});

TEST_F(MetersEndToEnd, FreshMetersAndResetValuesComeBackAsValues) {
    LogCapture capture;
    Play({300.5f, -2.0f, -120.25f, 4.0f});
    const std::vector<DspMeter> fresh = DspMeters();
    for (const DspMeter& meter : fresh) EXPECT_EQ(meter.flag, 1);

    // Flags raised: index 0 as the float, index 1 truncated to an integer; type 3 takes its
    // flag and gives no entry; index 9 is out of range and gives its reset value.
    std::string expected;
    PutU32(expected, 37);
    PutU32(expected, 3);
    PutU32(expected, 8);
    PutU32(expected, 0);
    PutF32(expected, fresh[0].value);
    PutU32(expected, 8);
    PutU32(expected, 1);
    PutU32(expected, static_cast<uint32_t>(static_cast<int32_t>(fresh[1].value)));
    PutU32(expected, 8);
    PutU32(expected, 9);
    PutU32(expected, 0x3FC00000u);
    EXPECT_EQ(fresh[0].value, 300.5f);
    EXPECT_EQ(static_cast<int32_t>(fresh[1].value), 228);  // sqrt((300.5^2 + 120.25^2) / 2)
    EXPECT_EQ(Round(kRequest), std::vector<char>(expected.begin(), expected.end()));
    EXPECT_TRUE(capture.Has(4, "Hifi3ReplyBufferParser::FlagTestAndClear index out of range 9"));

    // The DSP has no fresh reading (its flags read out and cleared): every meter gives its
    // reset value, type 3 too.
    float values[4];
    int flags[4];
    ASSERT_TRUE(m_dsp->Meters_Readout(values, flags, 4));
    for (const DspMeter& meter : DspMeters()) EXPECT_EQ(meter.flag, 0);
    expected.clear();
    PutU32(expected, 37);
    PutU32(expected, 4);
    for (const auto& entry :
         std::vector<std::pair<uint32_t, uint32_t>>{{0, 0}, {1, 77}, {3, 5}, {9, 0x3FC00000u}}) {
        PutU32(expected, 8);
        PutU32(expected, entry.first);
        PutU32(expected, entry.second);
    }
    EXPECT_EQ(Round(kRequest), std::vector<char>(expected.begin(), expected.end()));
}

TEST_F(MetersEndToEnd, DspVersionAndFailedExchanges) {
    std::string version;
    ASSERT_TRUE(m_manager->GetVersion(Settings(), "dsp", version));
    EXPECT_EQ(version, "DspKitSim 1.00 stand-in");

    // A DSP that does not answer: meters deliberately count as read, with no values; the
    // version fails.
    LogCapture capture;
    g_dsp = nullptr;
    std::map<uint32_t, CMeterValue> values;
    EXPECT_TRUE(m_manager->GetMeters(Settings(), {{0, CMeterInfo()}}, values));
    EXPECT_TRUE(values.empty());
    EXPECT_TRUE(capture.Has(1, "SendBufferToDsp fail"));
    EXPECT_FALSE(m_manager->GetVersion(Settings(), "dsp", version));
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
